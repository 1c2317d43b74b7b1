#include "libtarn/model/exceptions/DuplicateElementException.hpp"

#include <sstream>

#include "libtarn/model/DistinguishedName.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

DuplicateElementException::DuplicateElementException(const std::string& message)
    : ModelException(message) {}

DuplicateElementException::~DuplicateElementException() = default;

template <class T>
DuplicateElementException DuplicateElementException::instance(const char* childTag,
                                                              const char* parent,
                                                              const char* keyAttribute,
                                                              const T& key) {
  std::ostringstream message;
  message << "The '" << parent << "' element already contains a '" << childTag << "' element with '"
          << keyAttribute << "=" << key << "'";
  return DuplicateElementException(message.str());
}

template DuplicateElementException DuplicateElementException::instance(
    const char* childTag, const char* parent, const char* keyAttribute,
    DistinguishedName const& key);
template DuplicateElementException DuplicateElementException::instance(const char* childTag,
                                                                       const char* parent,
                                                                       const char* keyAttribute,
                                                                       std::string const& key);
template DuplicateElementException DuplicateElementException::instance(const char* childTag,
                                                                       const char* parent,
                                                                       const char* keyAttribute,
                                                                       char const* const& key);

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
