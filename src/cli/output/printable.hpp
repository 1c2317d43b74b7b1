#pragma once

#include <string>
#include <string_view>

namespace tarn {

// Texts of documents and names of files may hold what a terminal obeys: control characters (C0,
// DEL and C1, which is two bytes in UTF-8), line and paragraph separators, marks that turn the
// direction of writing. A byte that is no UTF-8 counts as one of them, since some terminals take
// 0x80 to 0x9F for C1. They are not printable; all other characters are.

/// True if every character of `text` is printable.
bool isPrintable(std::string_view text);

/// True if every character of `text` is printable and one of ASCII, so that each takes a byte and a
/// column.
bool isPrintableAscii(std::string_view text);

/// `text` with each byte of what is not printable written as \xNN.
std::string printable(std::string_view text);

/// `json`, in UTF-8, with what is not printable written as \uNNNN, which means the same.
std::string printableJson(std::string json);

}  // namespace tarn
