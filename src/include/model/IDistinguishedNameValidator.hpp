#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

/// Decides which distinguished names a managed object may get.
class TARN_API IDistinguishedNameValidator {
 public:
  /// `distName` may be null.
  virtual bool isValid(const char* distName) const = 0;

  virtual ~IDistinguishedNameValidator() = default;
};

}  // namespace model
}  // namespace libtarn
