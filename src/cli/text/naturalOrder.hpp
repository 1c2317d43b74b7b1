#pragma once

#include <string_view>

namespace tarn {

/// Compares two texts as people order them: runs of digits as numbers, so that "SITE-2" comes
/// before "SITE-10", and "/" before all else, so that an object is followed by what is below it.
/// Texts that differ only in leading zeros are ordered byte by byte. Returns a number below 0, 0 or
/// above 0 for less, equal or greater.
int compareNaturally(std::string_view a, std::string_view b);

/// compareNaturally() as a predicate for sorts.
inline bool isNaturallyBefore(std::string_view a, std::string_view b) {
  return compareNaturally(a, b) < 0;
}

}  // namespace tarn
