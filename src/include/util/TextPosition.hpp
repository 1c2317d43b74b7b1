#pragma once

#include <cstddef>
#include <cstdint>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace util {

/// Stands for "no offset".
constexpr std::size_t NO_OFFSET = SIZE_MAX;

/// A place in a text, for people. A line ends at a line feed, which is its last byte.
struct TextPosition {
  /// Line, counted from 1.
  std::size_t line;
  /// Column in bytes, counted from 1.
  std::size_t column;
};

/// Returns the place of the byte at `offset`, counted from 0. `text` is NUL-terminated and not
/// parsed in place, which overwrites line feeds. An offset after the NUL counts as that of the NUL.
TARN_API TextPosition locate(const char* text, std::size_t offset);

}  // namespace util
}  // namespace libtarn
