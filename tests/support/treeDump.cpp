#include "support/treeDump.hpp"

namespace tarn_test {

namespace {

using Node = rapidxml::xml_node<char>;

std::string text(const char* begin, std::size_t size) {
  std::string result(begin, size);
  for (char& c : result) {
    if (c == '\0') c = '0';
  }
  return result;
}

std::string open(const Node& node) {
  std::string out;
  if (node.type() == rapidxml::node_declaration) {
    out = "?xml";
  } else if (node.type() == rapidxml::node_element) {
    out = text(node.name(), node.name_size());
  }
  if (node.first_attribute()) {
    out += '(';
    const rapidxml::xml_attribute<char>* previous = nullptr;
    for (auto* attribute = node.first_attribute(); attribute;
         attribute = attribute->next_attribute()) {
      if (attribute->parent() != &node || attribute->previous_attribute() != previous) out += '!';
      if (previous) out += ' ';
      out += text(attribute->name(), attribute->name_size()) + '=' +
             text(attribute->value(), attribute->value_size());
      previous = attribute;
    }
    if (node.last_attribute() != previous) out += '!';
    out += ')';
  }
  if (node.value_size() > 0) out += '"' + text(node.value(), node.value_size()) + '"';
  return out;
}

}  // namespace

std::string dump(const Node& top) {
  std::string out;
  const Node* node = &top;
  for (;;) {
    out += open(*node);
    if (const Node* const first = node->first_node()) {
      out += '{';
      if (first->previous_sibling() || first->parent() != node) out += '!';
      node = first;
      continue;
    }
    while (node != &top && !node->next_sibling()) {
      if (node->parent()->last_node() != node) out += '!';
      node = node->parent();
      out += '}';
    }
    if (node == &top) return out;
    const Node* const next = node->next_sibling();
    if (next->previous_sibling() != node || next->parent() != node->parent()) out += '!';
    out += ' ';
    node = next;
  }
}

}  // namespace tarn_test
