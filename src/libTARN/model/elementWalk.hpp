#pragma once

#include <cstddef>

#include "libtarn/rapidxml/nodes.hpp"

namespace libtarn {
namespace model {

/// Calls `visit(element, depth)` for `top`, at depth 1, and everything below it in document order,
/// until it returns false. Returns whether it never did. Goes along the links, since a document
/// decides how deep it is.
template <class Visit>
bool walkElements(const rapidxml::xml_node<char>& top, Visit visit) {
  const rapidxml::xml_node<char>* node = &top;
  std::size_t depth = 1;
  for (;;) {
    if (!visit(*node, depth)) return false;
    if (const auto* const child = node->first_node()) {
      node = child;
      ++depth;
      continue;
    }
    while (node != &top && !node->next_sibling()) {
      node = node->parent();
      --depth;
    }
    if (node == &top) return true;
    node = node->next_sibling();
  }
}

}  // namespace model
}  // namespace libtarn
