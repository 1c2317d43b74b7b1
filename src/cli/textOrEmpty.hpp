#pragma once

namespace tarn {

/// `text`, or "" for null, which the library returns for what an element does not have.
inline const char* textOrEmpty(const char* text) { return text ? text : ""; }

}  // namespace tarn
