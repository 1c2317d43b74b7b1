#pragma once

#include <string>

#include "TarnApi.hpp"
#include "model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// An element that must have a text and has none.
class TARN_API NoElementValueException : public ModelException {
 public:
  /// `message` is what() as it stands.
  explicit NoElementValueException(const std::string& message);

  /// `element`: its path.
  static NoElementValueException instance(const char* element);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
