#pragma once

#include <cstddef>
#include <cstdint>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace util {

/// What stands for an offset when there is none.
constexpr std::size_t NO_OFFSET = SIZE_MAX;

/// A place in a text as people count: both from 1, the column in bytes. A line ends at a line feed,
/// which is its last byte.
struct TextPosition {
  /// Both from 1.
  std::size_t line;
  std::size_t column;
};

/// The place of the byte at `offset`, counted from 0. `text` ends with a zero byte and is pristine:
/// a text that was parsed in place no longer has its line feeds. An offset behind that zero counts
/// as the zero's.
TARN_API TextPosition locate(const char* text, std::size_t offset);

}  // namespace util
}  // namespace libtarn
