#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

/// Decides which distinguished names a managed object may have.
class TARN_API IDistinguishedNameValidator {
 public:
  /// Returns true if an object may have the name `distName`, which may be null.
  virtual bool isValid(const char* distName) const = 0;

  virtual ~IDistinguishedNameValidator() = default;
};

}  // namespace model
}  // namespace libtarn
