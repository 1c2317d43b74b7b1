#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// Reports an attribute with a text that it must not have.
class TARN_API InvalidAttributeValueException : public ModelException {
 public:
  /// `message` becomes what() unchanged.
  explicit InvalidAttributeValueException(const std::string& message);
  ~InvalidAttributeValueException() override;

  /// Returns an exception for that attribute and value; `element` is a tag or a path.
  static InvalidAttributeValueException instance(const char* element, const char* attribute,
                                                 const char* value);
  /// Throws the exception that instance() returns.
  [[noreturn]] static void throwException(const char* element, const char* attribute,
                                          const char* value);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
