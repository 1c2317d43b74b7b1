#include "libtarn/model/exceptions/DuplicateElementException.hpp"

#include <string_view>

#include "../../util/joined.hpp"
#include "libtarn/model/DistinguishedName.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

namespace {

const char* textOf(const DistinguishedName& key) { return key.getText(); }
std::string_view textOf(const std::string& key) { return key; }
const char* textOf(const char* key) { return key; }

}  // namespace

DuplicateElementException::DuplicateElementException(const std::string& message)
    : ModelException(message) {}

DuplicateElementException::~DuplicateElementException() = default;

template <class T>
DuplicateElementException DuplicateElementException::instance(const char* childTag,
                                                              const char* parent,
                                                              const char* keyAttribute,
                                                              const T& key) {
  return DuplicateElementException(util::joined("The '", parent, "' element already contains a '",
                                                childTag, "' element with '", keyAttribute, "=",
                                                textOf(key), "'"));
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
