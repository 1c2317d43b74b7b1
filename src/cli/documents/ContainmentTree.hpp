#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// The tree that distinguished names form: "A-1/B-2" is a child of "A-1", whether or not an object
/// has that name.
///
/// Points into the documents of the objects. Linear in the size of the names, except for the sort
/// of siblings. Nothing recurses, since a document decides how deep the tree is.
class ContainmentTree {
 public:
  static constexpr std::uint32_t NONE = UINT32_MAX;

  struct Node {
    std::string_view name;     // from the top down to this node
    std::string_view segment;  // the part of it after the last "/"
    const libtarn::model::LibTarnManagedObject* object = nullptr;  // null: a name only
    std::uint32_t parent = NONE;
    std::vector<std::uint32_t> children;
    std::map<std::string_view, std::size_t> countOfClass;  // objects below this node
  };

  ContainmentTree();

  /// Adds an object, whose texts must live as long as the tree.
  void add(const libtarn::model::LibTarnManagedObject& object);

  /// Node 0 is the root, above all names.
  const Node& node(std::uint32_t number) const { return nodes_[number]; }

 private:
  struct Key {
    std::uint32_t parent;
    std::string_view segment;
    bool operator<(const Key& other) const {
      return parent != other.parent ? parent < other.parent : segment < other.segment;
    }
  };

  std::uint32_t childOf(std::uint32_t parent, std::string_view name, std::string_view segment);

  std::vector<Node> nodes_;
  std::map<Key, std::uint32_t> numbers_;
};

}  // namespace tarn
