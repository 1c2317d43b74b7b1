#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// Reports an element without the text that it must have.
class TARN_API NoElementValueException : public ModelException {
 public:
  /// `message` becomes what() unchanged.
  explicit NoElementValueException(const std::string& message);
  ~NoElementValueException() override;

  /// Returns an exception for `element`, a path.
  static NoElementValueException instance(const char* element);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
