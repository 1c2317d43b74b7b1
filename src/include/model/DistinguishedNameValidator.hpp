#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/IDistinguishedNameValidator.hpp"

namespace libtarn {
namespace model {

/// The format's own rule: every segment has a "-" after at least one character, and only ASCII
/// letters and digits after its last "-". A name that holds "ZNT-1/" anywhere is always valid.
class TARN_API DistinguishedNameValidator : public IDistinguishedNameValidator {
 public:
  /// Returns true if `distName` keeps the rule. Linear in the length of the name.
  bool isValid(const char* distName) const override;

  /// Returns true if the characters of `dn` from index `start` to index `end`, inclusive, are a
  /// segment.
  bool isSegmentValid(const std::string& dn, unsigned int start, unsigned int end) const;
};

}  // namespace model
}  // namespace libtarn
