#include "output/printable.hpp"

#include <fmt/format.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace tarn {

namespace {

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

constexpr std::array<Range, 8> NOT_PRINTABLE = {{
    {0x00, 0x1F},
    {0x7F, 0x9F},
    {0x061C, 0x061C},
    {0x200E, 0x200F},
    {0x2028, 0x202E},
    {0x2066, 0x2069},
    {0xD800, 0xDFFF},  // no characters
    {0x110000, UINT32_MAX},
}};

/// The first character of a text.
struct Character {
  std::size_t size;  // bytes
  std::uint32_t code;
  bool isPrintable;
};

constexpr Character INVALID_BYTE = {1, 0, false};

std::uint32_t byteAt(std::string_view text, std::size_t index) {
  return static_cast<unsigned char>(text[index]);
}

// Size of the UTF-8 sequence that begins with `byte`; 0 when none does.
std::size_t sequenceSize(std::uint32_t byte) {
  if (byte < 0x80U) return 1;
  if (byte < 0xC2U) return 0;
  if (byte < 0xE0U) return 2;
  if (byte < 0xF0U) return 3;
  return byte < 0xF5U ? 4 : 0;
}

bool isPrintableCode(std::uint32_t code) {
  for (const Range& range : NOT_PRINTABLE) {
    if (code >= range.first && code <= range.last) return false;
  }
  return true;
}

// `text` is not empty.
Character firstOf(std::string_view text) {
  constexpr std::array<std::uint32_t, 5> LEAST_CODE = {0, 0, 0x80, 0x800, 0x10000};
  const std::size_t size = sequenceSize(byteAt(text, 0));
  if (size == 0 || size > text.size()) return INVALID_BYTE;
  std::uint32_t code = size == 1 ? byteAt(text, 0) : byteAt(text, 0) & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    const std::uint32_t byte = byteAt(text, i);
    if ((byte & 0xC0U) != 0x80U) return INVALID_BYTE;
    code = code << 6U | (byte & 0x3FU);
  }
  if (code < LEAST_CODE[size]) return INVALID_BYTE;
  return {size, code, isPrintableCode(code)};
}

template <class Append>
std::string escaped(std::string_view text, Append append) {
  std::string result;
  while (!text.empty()) {
    const std::size_t size = printableSize(text);
    result += text.substr(0, size);
    text.remove_prefix(size);
    if (text.empty()) break;
    const Character character = firstOf(text);
    append(result, text.substr(0, character.size), character.code);
    text.remove_prefix(character.size);
  }
  return result;
}

}  // namespace

std::size_t printableSize(std::string_view text) {
  std::size_t position = 0;
  while (position < text.size()) {
    if (text[position] >= ' ' && text[position] <= '~') {
      ++position;
      continue;
    }
    const Character character = firstOf(text.substr(position));
    if (!character.isPrintable) break;
    position += character.size;
  }
  return position;
}

// Does not stop at the first other character: nearly all texts have none, and the loop is faster.
bool isPrintableAscii(std::string_view text) {
  bool isAscii = true;
  for (const char c : text) isAscii &= c >= ' ' && c <= '~';
  return isAscii;
}

bool isPrintable(std::string_view text) {
  return isPrintableAscii(text) || printableSize(text) == text.size();
}

std::string printable(std::string_view text) {
  return escaped(text, [](std::string& result, std::string_view bytes, std::uint32_t /*code*/) {
    for (const char byte : bytes) {
      result += fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
    }
  });
}

std::string printableJson(std::string json) {
  if (isPrintable(json)) return json;
  return escaped(json, [](std::string& result, std::string_view /*bytes*/, std::uint32_t code) {
    result += fmt::format("\\u{:04X}", code);
  });
}

}  // namespace tarn
