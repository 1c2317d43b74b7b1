#include "libtarn/util/TextPosition.hpp"

#include <cstring>

namespace libtarn {
namespace util {

TextPosition locate(const char* text, std::size_t offset) {
  const char* const position = text + ::strnlen(text, offset);
  std::size_t line = 1;
  const char* lineStart = text;
  for (;;) {
    const auto left = static_cast<std::size_t>(position - lineStart);
    const void* const lineFeed = std::memchr(lineStart, '\n', left);
    if (!lineFeed) return {line, left + 1};
    lineStart = static_cast<const char*>(lineFeed) + 1;
    ++line;
  }
}

}  // namespace util
}  // namespace libtarn
