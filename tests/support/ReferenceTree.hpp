#pragma once

#include <string>
#include <utility>
#include <vector>

#include "libtarn/rapidxml/rapidxml.hpp"

namespace tarn_test {

/// An element in standard containers, without links, pool or indexes.
struct ReferenceElement {
  std::string tag;
  std::string value;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<ReferenceElement> children;

  /// Returns the first attribute of that name, or null.
  const std::string* attribute(const std::string& name) const;
  /// As above, "" when there is none.
  std::string attributeOr(const std::string& name) const;
  void setAttribute(const std::string& name, const std::string& value);

  /// Returns the first child of that tag, or null.
  ReferenceElement* firstChild(const std::string& tag);

  bool operator==(const ReferenceElement& other) const {
    return tag == other.tag && value == other.value && attributes == other.attributes &&
           children == other.children;
  }
};

/// Number of levels from `top` down, itself included.
std::size_t depthOf(const rapidxml::xml_node<char>& top);

/// Returns a copy of `top`. Recurses on the depth.
ReferenceElement toReferenceTree(const rapidxml::xml_node<char>& top);

/// True if a text of `element` holds a NUL.
bool holdsNul(const ReferenceElement& element);

}  // namespace tarn_test
