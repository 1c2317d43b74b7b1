#pragma once

#include <string>
#include <utility>
#include <vector>

#include "libtarn/rapidxml/rapidxml.hpp"

namespace tarn_test {

/// An element in standard containers, without links, pool or indexes.
struct PlainElement {
  std::string tag;
  std::string value;
  std::vector<std::pair<std::string, std::string>> attributes;
  std::vector<PlainElement> children;

  /// The first attribute of that name, or null.
  const std::string* attribute(const std::string& name) const;
  /// As above, "" when there is none.
  std::string attributeOr(const std::string& name) const;
  void setAttribute(const std::string& name, const std::string& value);

  /// The first child of that tag, or null.
  PlainElement* firstChild(const std::string& tag);

  bool operator==(const PlainElement& other) const {
    return tag == other.tag && value == other.value && attributes == other.attributes &&
           children == other.children;
  }
};

/// Levels below `top`, itself included.
std::size_t depthOf(const rapidxml::xml_node<char>& top);

/// A copy of `top`. Recurses on the depth.
PlainElement toPlain(const rapidxml::xml_node<char>& top);

/// Whether a text of `element` holds a zero byte.
bool holdsZero(const PlainElement& element);

}  // namespace tarn_test
