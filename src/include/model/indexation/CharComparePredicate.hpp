#pragma once

#include <cstring>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// Byte order of zero-terminated texts. Null counts as "".
struct TARN_API CharComparePredicate {
  /// Whether `a` comes before `b`, byte by byte.
  bool operator()(const char* a, const char* b) const { return compare(a, b) < 0; }

  /// Negative, zero or positive as `a` comes before, equals or comes after `b`.
  static int compare(const char* a, const char* b) { return std::strcmp(a ? a : "", b ? b : ""); }
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
