#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/ContainmentTree.hpp"
#include "documents/Selection.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "output/LineWriter.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;

namespace {

// A deeper tree would be wider than people can read.
constexpr std::size_t USUAL_DEPTH = 64;

struct TreeRequest {
  std::string file;
  Selection selection;
  std::size_t depth = USUAL_DEPTH;  ///< Segments of the names that are drawn.
  bool byteOrder = false;
};

std::string countsOf(const ContainmentTree::Node& node) {
  std::string counts;
  for (const auto& [className, count] : node.countOfClass) {
    counts += fmt::format("{}{} {}", counts.empty() ? "" : ", ", count,
                          className.empty() ? "without class" : printable(className));
  }
  return counts;
}

// An object that does not match may be above one that does.
const LibTarnManagedObject* objectOf(const ContainmentTree::Node& node,
                                     const LibTarnCmData& cmData) {
  return node.object ? node.object : cmData.getLibTarnManagedObject(std::string(node.name).c_str());
}

// The segment, the object's class, and the counts of objects below.
std::string labelOf(const ContainmentTree::Node& node, const LibTarnCmData& cmData) {
  std::string label = node.segment.empty() ? "(no name)" : printable(node.segment);
  if (const LibTarnManagedObject* const object = objectOf(node, cmData)) {
    label = styled(Style::Bold, label) + " " + printable(textOrEmpty(object->getClass()));
  } else {
    label += styled(Style::Faint, " (no object)");
  }
  const std::string counts = countsOf(node);
  return counts.empty() ? label : label + styled(Style::Faint, " [" + counts + "]");
}

/// Draws the tree from the top, one line for each node.
class Drawing {
 public:
  Drawing(const ContainmentTree& tree, const LibTarnCmData& cmData, std::size_t depth)
      : tree_(tree), cmData_(cmData), depth_(depth) {}

  void draw() {
    open_.push_back({0, 0});
    while (!open_.empty()) {
      Level& level = open_.back();
      const auto& children = tree_.node(level.node).children;
      if (level.next == children.size()) {
        open_.pop_back();
        continue;
      }
      const std::uint32_t child = children[level.next++];
      drawLine(child);
      // `level` is not used after this, since push_back() may move it.
      if (open_.size() < depth_) open_.push_back({child, 0});
    }
    writer_.flush();
  }

 private:
  struct Level {
    std::uint32_t node;
    std::size_t next;  // the child that is drawn next
  };

  bool isLast(const Level& level) const {
    return level.next == tree_.node(level.node).children.size();
  }

  // Nodes at the top have no branch in front of them.
  void drawLine(std::uint32_t number) {
    std::string& line = writer_.lines();
    for (std::size_t i = 1; i < open_.size(); ++i) {
      const bool isOwn = i + 1 == open_.size();
      line += isOwn ? (isLast(open_[i]) ? "└─ " : "├─ ") : (isLast(open_[i]) ? "   " : "│  ");
    }
    line += labelOf(tree_.node(number), cmData_);
    writer_.endLine();
  }

  const ContainmentTree& tree_;
  const LibTarnCmData& cmData_;
  std::size_t depth_;
  std::vector<Level> open_;
  LineWriter writer_;
};

Status drawTree(const TreeRequest& request) {
  Document document;
  ContainmentTree tree;
  Selector::Objects objects = loadSelected(request.file, request.selection, document);
  sortByName(objects, request.byteOrder ? NameOrder::Bytes : NameOrder::Natural);
  for (const LibTarnManagedObject* object : objects) tree.add(*object);
  Drawing(tree, *document.getLibTarnCmData(), request.depth).draw();
  return Status::Done;
}

}  // namespace

void addTree(CommandLine& line) {
  auto [options, request] =
      line.add<TreeRequest>("tree", "Draw the tree that the objects' names form", drawTree);
  addFile(options, request.file);
  options.addPositiveNumber("--depth", request.depth, "Segments of the names to draw");
  addSelection(options, request.selection);
  addNameOrder(options, request.byteOrder);
}

}  // namespace tarn
