#pragma once

// Characters of a text in UTF-8, and which of them XML 1.0 (fifth edition) allows where.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace libtarn {
namespace util {
namespace xml {

/// Why bytes are no character that a text may have.
enum class Defect : std::uint8_t { None, Forbidden, NoStart, CutOff, Overlong, BeyondUnicode };

/// One character, or bytes that are none.
struct Character {
  std::uint32_t code;
  std::size_t size;  // bytes, at least 1
  Defect defect;
};

constexpr bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

/// Production "Char".
constexpr bool isAllowed(std::uint32_t code) {
  if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
  if (code < 0xD800) return true;
  return code >= 0xE000 && code != 0xFFFE && code != 0xFFFF && code <= 0x10FFFF;
}

/// The character at `offset`, which lies within `text`. Bytes that are none end before the first
/// one that cannot belong to them.
inline Character characterAt(std::string_view text, std::size_t offset) {
  const auto byteAt = [text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
  const auto defectOf = [](std::uint32_t code) {
    return isAllowed(code) ? Defect::None : Defect::Forbidden;
  };
  const std::uint32_t first = byteAt(offset);
  if (first < 0x80) return {first, 1, defectOf(first)};
  if (first < 0xC0 || first > 0xF7) return {first, 1, Defect::NoStart};

  const std::size_t size = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  static constexpr std::array<std::uint32_t, 5> LEAST = {0, 0, 0x80, 0x800, 0x10000};
  std::uint32_t code = first & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if (offset + i == text.size() || (byteAt(offset + i) & 0xC0U) != 0x80) {
      return {first, i, Defect::CutOff};
    }
    code = code << 6U | (byteAt(offset + i) & 0x3FU);
  }
  if (code < LEAST[size]) return {code, size, Defect::Overlong};
  if (code > 0x10FFFF) return {code, size, Defect::BeyondUnicode};
  return {code, size, defectOf(code)};
}

constexpr bool isAsciiLetter(std::uint32_t code) {
  return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z');
}
constexpr bool isAsciiDigit(std::uint32_t code) { return code >= '0' && code <= '9'; }

/// Production "NameStartChar".
constexpr bool isNameStart(std::uint32_t code) {
  if (code < 0x80) return isAsciiLetter(code) || code == '_' || code == ':';
  constexpr std::uint32_t RANGES[][2] = {{0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},
                                         {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D},
                                         {0x2070, 0x218F}, {0x2C00, 0x2FEF}, {0x3001, 0xD7FF},
                                         {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF}};
  for (const auto& range : RANGES) {
    if (code >= range[0] && code <= range[1]) return true;
  }
  return false;
}

/// Production "NameChar".
constexpr bool isName(std::uint32_t code) {
  if (isNameStart(code) || isAsciiDigit(code) || code == '-' || code == '.') return true;
  return code == 0xB7 || (code >= 0x300 && code <= 0x36F) || code == 0x203F || code == 0x2040;
}

/// `text` for a message: valid UTF-8 on one line, what is no character as "?", and no more than
/// sixty bytes with what stands for the rest.
inline std::string quoted(std::string_view text) {
  constexpr std::size_t MOST_BYTES = 57;
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    const Character character = characterAt(text, at);
    if (at + character.size > MOST_BYTES) return out + "...";
    if (character.defect != Defect::None) {
      out += '?';
    } else if (isBlank(text[at])) {
      out += ' ';
    } else {
      out.append(text, at, character.size);
    }
    at += character.size;
  }
  return out;
}

/// `code` as in "U+0041".
inline std::string unicodeName(std::uint32_t code) {
  constexpr std::string_view DIGITS = "0123456789ABCDEF";
  std::string name = "U+";
  unsigned shift = code > 0xFFFFF ? 20 : code > 0xFFFF ? 16 : 12;
  for (;; shift -= 4) {
    name += DIGITS[code >> shift & 0xFU];
    if (shift == 0) return name;
  }
}

}  // namespace xml
}  // namespace util
}  // namespace libtarn
