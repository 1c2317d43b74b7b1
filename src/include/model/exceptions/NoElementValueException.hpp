#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// An element that must have a text and has none.
class TARN_API NoElementValueException : public ModelException {
 public:
  /// `message` is what() as it stands.
  explicit NoElementValueException(const std::string& message);
  ~NoElementValueException() override;

  /// `element`: its path.
  static NoElementValueException instance(const char* element);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
