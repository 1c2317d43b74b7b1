#include "libtarn/model/exceptions/NoSuchElementException.hpp"

#include <sstream>

namespace libtarn {
namespace model {
namespace exceptions {

NoSuchElementException::NoSuchElementException(const std::string& message)
    : ModelException(message) {}

NoSuchElementException::~NoSuchElementException() = default;

template <class T>
NoSuchElementException NoSuchElementException::instance(const char* childTag,
                                                        const char* keyAttribute, const T& key) {
  std::ostringstream message;
  message << "Child '" << childTag << "' element identified by '" << keyAttribute << "=" << key
          << "' not found";
  return NoSuchElementException(message.str());
}

template NoSuchElementException NoSuchElementException::instance(const char* childTag,
                                                                 const char* keyAttribute,
                                                                 std::string const& key);

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
