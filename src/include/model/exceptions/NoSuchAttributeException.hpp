#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// Reports the absence of a required attribute.
class TARN_API NoSuchAttributeException : public ModelException {
 public:
  /// `message` becomes what() unchanged.
  explicit NoSuchAttributeException(const std::string& message);
  ~NoSuchAttributeException() override;

  /// Returns an exception for that attribute; `element` is a tag or a path.
  static NoSuchAttributeException instance(const char* element, const char* attribute);
  /// Throws the exception that instance() returns.
  [[noreturn]] static void throwException(const char* element, const char* attribute);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
