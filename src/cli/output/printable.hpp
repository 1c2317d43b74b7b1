#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarn {

// Texts of documents and names of files may hold characters that a terminal obeys: control
// characters (C0, DEL and C1, which is two bytes in UTF-8), line and paragraph separators, marks
// that change the direction of writing. These are not printable, and neither is a byte that is not
// UTF-8, since some terminals read 0x80 to 0x9F as C1. All other characters are printable.

/// Returns how many bytes at the start of `text` are printable characters.
std::size_t printableSize(std::string_view text);

/// True if every character of `text` is printable.
bool isPrintable(std::string_view text);

/// True if every character of `text` is printable ASCII, so that each takes one byte and one
/// column.
bool isPrintableAscii(std::string_view text);

/// Returns `text` with each byte of a character that is not printable written as \xNN.
std::string printable(std::string_view text);

/// Returns `json`, in UTF-8, with characters that are not printable written as \uNNNN, which means
/// the same.
std::string printableJson(std::string json);

}  // namespace tarn
