#include "libtarn/model/exceptions/InvalidChildCountException.hpp"

#include <sstream>

namespace libtarn {
namespace model {
namespace exceptions {

InvalidChildCountException::InvalidChildCountException(const std::string& message)
    : ModelException(message) {}

InvalidChildCountException::~InvalidChildCountException() = default;

InvalidChildCountException InvalidChildCountException::instance(const char* childTag,
                                                                const char* element,
                                                                std::size_t min, std::size_t max,
                                                                std::size_t count) {
  std::ostringstream message;
  message << "The '" << element << "' element has " << count << " child '" << childTag
          << "' elements.  Expected: ";
  if (min == max) {
    message << min;
  } else {
    message << "[" << min << ", " << max << "]";
  }
  return InvalidChildCountException(message.str());
}

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
