#include "libtarn/model/exceptions/InvalidChildCountException.hpp"

#include <string_view>

#include "../../util/joined.hpp"

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
  const std::string expected =
      min == max ? util::joined(min) : util::joined("[", min, ", ", max, "]");
  return InvalidChildCountException(
      util::joined("The '", element, "' element has ", count, " child '", childTag,
                   "' elements.  Expected: ", std::string_view(expected)));
}

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
