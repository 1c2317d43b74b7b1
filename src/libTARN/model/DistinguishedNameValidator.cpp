#include "libtarn/model/DistinguishedNameValidator.hpp"

#include <cstddef>
#include <cstring>
#include <string_view>

namespace libtarn {
namespace model {

namespace {

constexpr const char* ALWAYS_VALID_PART = "ZNT-1/";

// Independent of the locale.
bool isAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Returns true if the characters of `dn` from `start` up to, but without, `end` are a segment. The
// last "-" may be at `end` itself, where the closing "/" is.
bool isSegment(std::string_view dn, std::size_t start, std::size_t end) {
  const std::size_t dash = dn.rfind('-', end);
  if (dash == std::string_view::npos || dash <= start) return false;
  for (std::size_t i = dash + 1; i < end && i < dn.size(); ++i) {
    if (!isAlphanumeric(dn[i])) return false;
  }
  return true;
}

bool areSegments(std::string_view name) {
  std::size_t start = 0;
  for (;;) {
    const std::size_t slash = name.find('/', start);
    if (slash == std::string_view::npos) return isSegment(name, start, name.size());
    if (!isSegment(name, start, slash)) return false;
    start = slash + 1;
  }
}

}  // namespace

bool DistinguishedNameValidator::isValid(const char* distName) const {
  if (!distName) return false;
  return areSegments(distName) || std::strstr(distName, ALWAYS_VALID_PART);
}

bool DistinguishedNameValidator::isSegmentValid(const std::string& dn, unsigned int start,
                                                unsigned int end) const {
  // An empty first segment ends at index 0 - 1, which wraps around.
  return isSegment(dn, start, end + 1);
}

}  // namespace model
}  // namespace libtarn
