#include "libtarn/model/exceptions/NoSuchAttributeException.hpp"

#include "../../util/joined.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

NoSuchAttributeException::NoSuchAttributeException(const std::string& message)
    : ModelException(message) {}

NoSuchAttributeException::~NoSuchAttributeException() = default;

NoSuchAttributeException NoSuchAttributeException::instance(const char* element,
                                                            const char* attribute) {
  return NoSuchAttributeException(
      util::joined("The '", element, "' element has no attribute '", attribute, "'"));
}

void NoSuchAttributeException::throwException(const char* element, const char* attribute) {
  throw instance(element, attribute);
}

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
