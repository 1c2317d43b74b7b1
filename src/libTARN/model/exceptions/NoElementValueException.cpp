#include "libtarn/model/exceptions/NoElementValueException.hpp"

#include "../../util/joined.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

NoElementValueException::NoElementValueException(const std::string& message)
    : ModelException(message) {}

NoElementValueException::~NoElementValueException() = default;

NoElementValueException NoElementValueException::instance(const char* element) {
  return NoElementValueException(util::joined("The '", element, "' element has no value"));
}

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
