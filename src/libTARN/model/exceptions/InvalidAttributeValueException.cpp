#include "libtarn/model/exceptions/InvalidAttributeValueException.hpp"

#include "../../util/joined.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

InvalidAttributeValueException::InvalidAttributeValueException(const std::string& message)
    : ModelException(message) {}

InvalidAttributeValueException::~InvalidAttributeValueException() = default;

InvalidAttributeValueException InvalidAttributeValueException::instance(const char* element,
                                                                        const char* attribute,
                                                                        const char* value) {
  return InvalidAttributeValueException(util::joined("'", value, "' is not a valid value of '",
                                                     element, "' attribute '", attribute, "'"));
}

void InvalidAttributeValueException::throwException(const char* element, const char* attribute,
                                                    const char* value) {
  throw instance(element, attribute, value);
}

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
