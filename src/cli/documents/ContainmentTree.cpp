#include "documents/ContainmentTree.hpp"

#include <algorithm>

#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

ContainmentTree::ContainmentTree() : nodes_(1) {}

std::uint32_t ContainmentTree::childOf(std::uint32_t parent, std::string_view name,
                                       std::string_view segment) {
  const auto number = static_cast<std::uint32_t>(nodes_.size());
  const auto [it, isNew] = numbers_.insert({Key{parent, segment}, number});
  if (!isNew) return it->second;
  Node node;
  node.name = name;
  node.segment = segment;
  node.parent = parent;
  nodes_.push_back(node);
  nodes_[parent].children.push_back(number);
  return number;
}

void ContainmentTree::add(const LibTarnManagedObject& object) {
  const std::string_view name = textOrEmpty(object.getDistName().getText());
  std::uint32_t number = 0;
  for (std::size_t start = 0;;) {
    const std::size_t slash = std::min(name.find('/', start), name.size());
    number = childOf(number, name.substr(0, slash), name.substr(start, slash - start));
    if (slash == name.size()) break;
    start = slash + 1;
  }
  nodes_[number].object = &object;
  const std::string_view className = textOrEmpty(object.getClass());
  for (std::uint32_t above = nodes_[number].parent; above != NONE; above = nodes_[above].parent) {
    ++nodes_[above].countOfClass[className];
  }
}

}  // namespace tarn
