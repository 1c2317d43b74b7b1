#include "support/ReferenceTree.hpp"

#include <algorithm>

namespace tarn_test {

const std::string* ReferenceElement::attribute(const std::string& name) const {
  for (const auto& [key, text] : attributes) {
    if (key == name) return &text;
  }
  return nullptr;
}

std::string ReferenceElement::attributeOr(const std::string& name) const {
  const std::string* const text = attribute(name);
  return text ? *text : "";
}

void ReferenceElement::setAttribute(const std::string& name, const std::string& text) {
  for (auto& [key, current] : attributes) {
    if (key != name) continue;
    current = text;
    return;
  }
  attributes.emplace_back(name, text);
}

ReferenceElement* ReferenceElement::firstChild(const std::string& childTag) {
  for (ReferenceElement& child : children) {
    if (child.tag == childTag) return &child;
  }
  return nullptr;
}

std::size_t depthOf(const rapidxml::xml_node<char>& top) {
  std::size_t deepest = 1;
  std::size_t depth = 1;
  const rapidxml::xml_node<char>* node = &top;
  for (;;) {
    deepest = std::max(deepest, depth);
    if (node->first_node()) {
      node = node->first_node();
      ++depth;
      continue;
    }
    while (node != &top && !node->next_sibling()) {
      node = node->parent();
      --depth;
    }
    if (node == &top) return deepest;
    node = node->next_sibling();
  }
}

ReferenceElement toReferenceTree(const rapidxml::xml_node<char>& top) {
  ReferenceElement reference;
  reference.tag.assign(top.name(), top.name_size());
  reference.value.assign(top.value(), top.value_size());
  for (auto* attribute = top.first_attribute(); attribute;
       attribute = attribute->next_attribute()) {
    reference.attributes.emplace_back(std::string(attribute->name(), attribute->name_size()),
                                      std::string(attribute->value(), attribute->value_size()));
  }
  for (const auto* child = top.first_node(); child; child = child->next_sibling()) {
    reference.children.push_back(toReferenceTree(*child));
  }
  return reference;
}

bool holdsNul(const ReferenceElement& element) {
  const auto has = [](const std::string& text) { return text.find('\0') != std::string::npos; };
  return has(element.value) ||
         std::any_of(element.attributes.begin(), element.attributes.end(),
                     [&](const auto& attribute) { return has(attribute.second); }) ||
         std::any_of(element.children.begin(), element.children.end(), holdsNul);
}

}  // namespace tarn_test
