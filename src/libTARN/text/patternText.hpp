#pragma once

#include <cstring>

namespace libtarn {
namespace model {

// Texts of a pattern object, which may be absent (null).

inline bool isEmptyText(const char* text) { return !text || *text == '\0'; }

/// Returns true for "#", which matches any text.
inline bool isWildcard(const char* text) { return text && std::strcmp(text, "#") == 0; }

/// Returns true if the texts are equal. An absent text equals only an absent one.
inline bool isSameText(const char* a, const char* b) {
  if (!a || !b) return a == b;
  return std::strcmp(a, b) == 0;
}

inline const char* textOrEmpty(const char* text) { return text ? text : ""; }

}  // namespace model
}  // namespace libtarn
