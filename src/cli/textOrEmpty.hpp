#pragma once

namespace tarn {

/// Returns `text`, or "" for null, which the library returns for an absent attribute.
inline const char* textOrEmpty(const char* text) { return text ? text : ""; }

}  // namespace tarn
