#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// An attribute that must be there and is absent.
class TARN_API NoSuchAttributeException : public ModelException {
 public:
  /// `message` is what() as it stands.
  explicit NoSuchAttributeException(const std::string& message);
  ~NoSuchAttributeException() override;

  /// `element`: its tag or path.
  static NoSuchAttributeException instance(const char* element, const char* attribute);
  /// Throws what instance() makes.
  [[noreturn]] static void throwException(const char* element, const char* attribute);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
