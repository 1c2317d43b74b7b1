#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// A named child that is not there.
class TARN_API NoSuchElementException : public ModelException {
 public:
  /// `message` is what() as it stands.
  explicit NoSuchElementException(const std::string& message);
  ~NoSuchElementException() override;

  /// Instantiated for keys of type std::string.
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
