#pragma once

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

inline bool sameTexts(const Record& a, const Record& b) {
  return a.name_size() == b.name_size() && a.value_size() == b.value_size() &&
         std::memcmp(a.name(), b.name(), a.name_size()) == 0 &&
         std::memcmp(a.value(), b.value(), a.value_size()) == 0;
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
