#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// An attribute with a text that it may not have.
class TARN_API InvalidAttributeValueException : public ModelException {
 public:
  /// `message` is what() as it stands.
  explicit InvalidAttributeValueException(const std::string& message);
  ~InvalidAttributeValueException() override;

  /// `element`: its tag or path.
  static InvalidAttributeValueException instance(const char* element, const char* attribute,
                                                 const char* value);
  /// Throws what instance() makes.
  [[noreturn]] static void throwException(const char* element, const char* attribute,
                                          const char* value);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
