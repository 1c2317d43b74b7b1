#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// Reports that a named child does not exist.
class TARN_API NoSuchElementException : public ModelException {
 public:
  /// `message` becomes what() unchanged.
  explicit NoSuchElementException(const std::string& message);
  ~NoSuchElementException() override;

  /// Returns an exception for the key `key` of a child `childTag`. Instantiated for keys of type
  /// std::string.
  template <class T>
  static NoSuchElementException instance(const char* childTag, const char* keyAttribute,
                                         const T& key);
};

extern template NoSuchElementException NoSuchElementException::instance(const char* childTag,
                                                                        const char* keyAttribute,
                                                                        std::string const& key);

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
