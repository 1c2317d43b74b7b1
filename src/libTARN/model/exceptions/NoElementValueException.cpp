#include "libtarn/model/exceptions/NoElementValueException.hpp"

#include <sstream>

namespace libtarn {
namespace model {
namespace exceptions {

NoElementValueException::NoElementValueException(const std::string& message)
    : ModelException(message) {}

NoElementValueException::~NoElementValueException() = default;

NoElementValueException NoElementValueException::instance(const char* element) {
  std::ostringstream message;
  message << "The '" << element << "' element has no value";
  return NoElementValueException(message.str());
}

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
