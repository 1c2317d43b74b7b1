#include "libtarn/model/exceptions/NoSuchElementException.hpp"

#include <string_view>

#include "../../util/joined.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

NoSuchElementException::NoSuchElementException(const std::string& message)
    : ModelException(message) {}

NoSuchElementException::~NoSuchElementException() = default;

template <class T>
NoSuchElementException NoSuchElementException::instance(const char* childTag,
                                                        const char* keyAttribute, const T& key) {
  return NoSuchElementException(util::joined("Child '", childTag, "' element identified by '",
                                             keyAttribute, "=", std::string_view(key),
                                             "' not found"));
}

template NoSuchElementException NoSuchElementException::instance(const char* childTag,
                                                                 const char* keyAttribute,
                                                                 std::string const& key);

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
