#pragma once

#include <cstring>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// Byte order of NUL-terminated texts. Null counts as "".
struct TARN_API CharComparePredicate {
  /// Returns true if `a` is before `b`, byte by byte.
  bool operator()(const char* a, const char* b) const { return compare(a, b) < 0; }

  /// Returns a negative number, zero or a positive number if `a` is before, equal to or after `b`.
  static int compare(const char* a, const char* b) { return std::strcmp(a ? a : "", b ? b : ""); }
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
