#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {

class DistinguishedName;

namespace exceptions {

/// Reports a second child under a unique key.
class TARN_API DuplicateElementException : public ModelException {
 public:
  /// `message` becomes what() unchanged.
  explicit DuplicateElementException(const std::string& message);
  ~DuplicateElementException() override;

  /// Returns an exception for the key `key` of a child `childTag`; `parent` is the parent's tag or
  /// path. Instantiated for keys of type DistinguishedName, std::string and const char*.
  template <class T>
  static DuplicateElementException instance(const char* childTag, const char* parent,
                                            const char* keyAttribute, const T& key);
};

extern template DuplicateElementException DuplicateElementException::instance(
    const char* childTag, const char* parent, const char* keyAttribute,
    DistinguishedName const& key);
extern template DuplicateElementException DuplicateElementException::instance(
    const char* childTag, const char* parent, const char* keyAttribute, std::string const& key);
extern template DuplicateElementException DuplicateElementException::instance(
    const char* childTag, const char* parent, const char* keyAttribute, char const* const& key);

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
