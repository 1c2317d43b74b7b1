#include "output/report/NameTree.hpp"

#include <algorithm>
#include <deque>
#include <map>
#include <utility>

#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

constexpr std::uint32_t NONE = UINT32_MAX;

struct Node {
  std::string_view segment;
  const LibTarnManagedObject* object = nullptr;
  std::uint32_t parent = NONE;
  std::uint32_t firstChild = NONE;
  std::uint32_t lastChild = NONE;
  std::uint32_t nextSibling = NONE;
};

class NameTree {
 public:
  NameTree() : nodes_(1) {}

  void add(const LibTarnManagedObject& object) {
    const std::string_view name = textOrEmpty(object.getDistName().getText());
    std::uint32_t number = 0;
    std::size_t depth = 0;
    for (std::size_t start = 0;;) {
      const std::size_t slash = std::min(name.find('/', start), name.size());
      number = step(number, depth++, name.substr(start, slash - start));
      if (slash == name.size()) break;
      start = slash + 1;
    }
    path_.resize(depth);
    nodes_[number].object = &object;
  }

  /// The last call: frees first what only add() needs.
  std::vector<TreeName> inOrder() {
    numbers_.clear();
    std::vector<TreeName> names;
    names.reserve(nodes_.size() - 1);
    std::size_t depth = 0;
    for (std::uint32_t number = nodes_[0].firstChild; number != NONE;) {
      const Node& node = nodes_[number];
      names.push_back({node.segment, depth, node.object});
      if (node.firstChild != NONE) {
        number = node.firstChild;
        ++depth;
        continue;
      }
      for (; number != 0 && nodes_[number].nextSibling == NONE; number = nodes_[number].parent) {
        --depth;
      }
      number = nodes_[number].nextSibling;
    }
    return names;
  }

 private:
  // Objects come with their neighbours, so most segments are those of the object before.
  std::uint32_t step(std::uint32_t parent, std::size_t depth, std::string_view segment) {
    if (depth < path_.size() && nodes_[path_[depth]].parent == parent &&
        nodes_[path_[depth]].segment == segment) {
      return path_[depth];
    }
    const std::uint32_t child = childOf(parent, segment);
    path_.resize(depth);
    path_.push_back(child);
    return child;
  }

  std::uint32_t childOf(std::uint32_t parent, std::string_view segment) {
    const auto number = static_cast<std::uint32_t>(nodes_.size());
    const auto [it, isNew] = numbers_.insert({{parent, segment}, number});
    if (!isNew) return it->second;
    Node node;
    node.segment = segment;
    node.parent = parent;
    nodes_.push_back(node);
    std::uint32_t& last = nodes_[parent].lastChild;
    (last == NONE ? nodes_[parent].firstChild : nodes_[last].nextSibling) = number;
    last = number;
    return number;
  }

  std::deque<Node> nodes_;           // the first is above all names
  std::vector<std::uint32_t> path_;  // of the object before
  std::map<std::pair<std::uint32_t, std::string_view>, std::uint32_t> numbers_;
};

}  // namespace

std::vector<TreeName> treeOfNames(const std::vector<const LibTarnManagedObject*>& objects) {
  NameTree tree;
  for (const LibTarnManagedObject* object : objects) tree.add(*object);
  return tree.inOrder();
}

}  // namespace tarn
