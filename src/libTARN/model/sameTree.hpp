#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "libtarn/rapidxml/nodes.hpp"

namespace libtarn {
namespace model {

using Record = rapidxml::xml_base<char>;
using Attribute = rapidxml::xml_attribute<char>;
using Node = rapidxml::xml_node<char>;

inline std::string_view nameOf(const Record& record) { return {record.name(), record.name_size()}; }

inline std::string_view valueOf(const Record& record) {
  return {record.value(), record.value_size()};
}

/// Like memcmp() == 0, without a call for a short text: most names and values are.
inline bool sameBytes(const char* a, const char* b, std::size_t size) {
  const auto differ = [](const char* x, const char* y, auto word) {
    auto other = word;
    std::memcpy(&word, x, sizeof(word));
    std::memcpy(&other, y, sizeof(word));
    return word != other;
  };
  if (size > 2 * sizeof(std::uint64_t)) return std::memcmp(a, b, size) == 0;
  // Two words, which may overlap.
  if (size >= sizeof(std::uint64_t)) {
    const std::size_t last = size - sizeof(std::uint64_t);
    return !differ(a, b, std::uint64_t{}) && !differ(a + last, b + last, std::uint64_t{});
  }
  if (size >= sizeof(std::uint32_t)) {
    const std::size_t last = size - sizeof(std::uint32_t);
    return !differ(a, b, std::uint32_t{}) && !differ(a + last, b + last, std::uint32_t{});
  }
  for (std::size_t i = 0; i < size; ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

inline bool sameBytes(std::string_view a, std::string_view b) {
  return a.size() == b.size() && sameBytes(a.data(), b.data(), a.size());
}

inline bool sameTexts(const Record& a, const Record& b) {
  return sameBytes(nameOf(a), nameOf(b)) && sameBytes(valueOf(a), valueOf(b));
}

/// Returns true if the attributes are the same ones in the same order.
inline bool sameAttributes(const Node& a, const Node& b) {
  const Attribute* x = a.first_attribute();
  const Attribute* y = b.first_attribute();
  while (x && y && sameTexts(*x, *y)) {
    x = x->next_attribute();
    y = y->next_attribute();
  }
  return !x && !y;
}

/// Returns true if both trees print the same, apart from their indentation. Goes along the links,
/// since a document decides how deep it is.
inline bool sameTree(const Node& a, const Node& b) {
  const Node* x = &a;
  const Node* y = &b;
  for (;;) {
    if (x->type() != y->type() || !sameTexts(*x, *y) || !sameAttributes(*x, *y)) return false;
    const Node* const child = x->first_node();
    const Node* const otherChild = y->first_node();
    if (!child != !otherChild) return false;
    if (child) {
      x = child;
      y = otherChild;
      continue;
    }
    for (;;) {
      if (x == &a) return true;
      const Node* const next = x->next_sibling();
      const Node* const otherNext = y->next_sibling();
      if (!next != !otherNext) return false;
      if (next) {
        x = next;
        y = otherNext;
        break;
      }
      x = x->parent();
      y = y->parent();
    }
  }
}

}  // namespace model
}  // namespace libtarn
