#pragma once

// Character classes of the parser as 256-entry tables, and the tables of references.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace rapidxml {
namespace internal {

using character_table = std::array<bool, 256>;

constexpr bool is_one_of(unsigned char c, const char* set) {
  for (; *set != '\0'; ++set) {
    if (c == static_cast<unsigned char>(*set)) return true;
  }
  return false;
}

/// Returns the class of every byte that is neither NUL nor in `excluded`.
constexpr character_table all_but(const char* excluded) {
  character_table table{};
  for (std::size_t c = 1; c < table.size(); ++c) {
    table[c] = !is_one_of(static_cast<unsigned char>(c), excluded);
  }
  return table;
}

constexpr character_table only(const char* included) {
  character_table table{};
  for (std::size_t c = 1; c < table.size(); ++c) {
    table[c] = is_one_of(static_cast<unsigned char>(c), included);
  }
  return table;
}

struct whitespace {
  [[gnu::visibility("hidden")]] static constexpr character_table table = only("\t\n\r ");
};
struct node_name {
  [[gnu::visibility("hidden")]] static constexpr character_table table = all_but("\t\n\r />?");
};
struct attribute_name {
  [[gnu::visibility("hidden")]] static constexpr character_table table = all_but("\t\n\r !/<=>?");
};
struct text {
  [[gnu::visibility("hidden")]] static constexpr character_table table = all_but("<");
};
struct single_quoted {
  [[gnu::visibility("hidden")]] static constexpr character_table table = all_but("'");
};
struct double_quoted {
  [[gnu::visibility("hidden")]] static constexpr character_table table = all_but("\"");
};

/// Characters that are printed as they are.
struct verbatim {
  [[gnu::visibility("hidden")]] static constexpr character_table table = [] {
    character_table all = all_but("&<>'\"");
    all[0] = true;
    return all;
  }();
};

constexpr character_table without_ampersand(character_table table) {
  table[static_cast<unsigned char>('&')] = false;
  return table;
}

/// The characters of `Class` except "&".
template <class Class>
struct without_references {
  [[gnu::visibility("hidden")]] static constexpr character_table table =
      without_ampersand(Class::table);
};

template <class Class>
constexpr bool contains(char c) {
  return Class::table[static_cast<unsigned char>(c)];
}

struct named_reference {
  const char* name;  // without the "&"
  std::size_t size;
  char character;
};

inline constexpr std::array<named_reference, 5> named_references = {{
    {"amp;", 4, '&'},
    {"lt;", 3, '<'},
    {"gt;", 3, '>'},
    {"quot;", 5, '"'},
    {"apos;", 5, '\''},
}};

/// Largest code point of Unicode.
constexpr std::uint32_t max_code_point = 0x10FFFF;

/// Returns the value of a hexadecimal digit, 16 for any other character.
constexpr std::uint32_t digit_value(char c) {
  if (c >= '0' && c <= '9') return static_cast<std::uint32_t>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<std::uint32_t>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<std::uint32_t>(c - 'A' + 10);
  return 16;
}

/// Writes `code`, at most max_code_point, as UTF-8 and returns the position after it.
inline char* write_utf8(std::uint32_t code, char* out) {
  const auto continuation = [code](unsigned shift) {
    return static_cast<char>(0x80U | ((code >> shift) & 0x3FU));
  };
  if (code < 0x80) {
    *out++ = static_cast<char>(code);
  } else if (code < 0x800) {
    *out++ = static_cast<char>(0xC0U | (code >> 6U));
    *out++ = continuation(0);
  } else if (code < 0x10000) {
    *out++ = static_cast<char>(0xE0U | (code >> 12U));
    *out++ = continuation(6);
    *out++ = continuation(0);
  } else {
    *out++ = static_cast<char>(0xF0U | (code >> 18U));
    *out++ = continuation(12);
    *out++ = continuation(6);
    *out++ = continuation(0);
  }
  return out;
}

}  // namespace internal
}  // namespace rapidxml
