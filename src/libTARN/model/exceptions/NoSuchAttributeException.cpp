#include "libtarn/model/exceptions/NoSuchAttributeException.hpp"

#include <sstream>

namespace libtarn {
namespace model {
namespace exceptions {

NoSuchAttributeException::NoSuchAttributeException(const std::string& message)
    : ModelException(message) {}

NoSuchAttributeException::~NoSuchAttributeException() = default;

NoSuchAttributeException NoSuchAttributeException::instance(const char* element,
                                                            const char* attribute) {
  std::ostringstream message;
  message << "The '" << element << "' element has no attribute '" << attribute << "'";
  return NoSuchAttributeException(message.str());
}

void NoSuchAttributeException::throwException(const char* element, const char* attribute) {
  throw instance(element, attribute);
}

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
