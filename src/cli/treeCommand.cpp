#include <fmt/format.h>

#include "ContainmentTree.hpp"
#include "commands.hpp"
#include "model/LibTarnCmData.hpp"
#include "outputFile.hpp"
#include "printable.hpp"
#include "terminal.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;

namespace {

constexpr std::size_t OUTPUT_BLOCK = std::size_t{1} << 18U;

std::string countsOf(const ContainmentTree::Node& node) {
  std::string counts;
  for (const auto& [className, count] : node.countOfClass) {
    counts += fmt::format("{}{} {}", counts.empty() ? "" : ", ", count,
                          className.empty() ? "without class" : printable(className));
  }
  return counts;
}

// An object that is not among the matching ones may yet stand above them.
const LibTarnManagedObject* objectOf(const ContainmentTree::Node& node,
                                     const LibTarnCmData& cmData) {
  return node.object ? node.object : cmData.getLibTarnManagedObject(std::string(node.name).c_str());
}

// The segment, the object's class, and what lies below.
std::string labelOf(const ContainmentTree::Node& node, const LibTarnCmData& cmData) {
  std::string label = node.segment.empty() ? "(no name)" : printable(node.segment);
  if (const LibTarnManagedObject* const object = objectOf(node, cmData)) {
    const char* const className = object->getClass();
    label = styled(Style::Bold, label) + " " + printable(className ? className : "");
  } else {
    label += styled(Style::Faint, " (no object)");
  }
  const std::string counts = countsOf(node);
  return counts.empty() ? label : label + styled(Style::Faint, " [" + counts + "]");
}

/// Draws the tree from the top, one line a node.
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
      // The reference is not used behind this: the levels may move.
      if (open_.size() < depth_) open_.push_back({child, 0});
    }
    writeOutput(text_);
  }

 private:
  struct Level {
    std::uint32_t node;
    std::size_t next;  // the child that is drawn next
  };

  bool isLast(const Level& level) const {
    return level.next == tree_.node(level.node).children.size();
  }

  // Names at the top have no lines before them.
  void drawLine(std::uint32_t number) {
    for (std::size_t i = 1; i < open_.size(); ++i) {
      const bool isOwn = i + 1 == open_.size();
      text_ += isOwn ? (isLast(open_[i]) ? "└─ " : "├─ ") : (isLast(open_[i]) ? "   " : "│  ");
    }
    text_ += labelOf(tree_.node(number), cmData_) + "\n";
    if (text_.size() < OUTPUT_BLOCK) return;
    writeOutput(text_);
    text_.clear();
  }

  const ContainmentTree& tree_;
  const LibTarnCmData& cmData_;
  std::size_t depth_;
  std::vector<Level> open_;
  std::string text_;
};

}  // namespace

void treeCommand(const std::string& path, const std::string& distName, std::size_t depth) {
  PatternOptions options;
  options.distName = distName;
  LibTarnDocument document(libtarn::model::OutOfMemory::Throw);
  ContainmentTree tree;
  for (const LibTarnManagedObject* object : loadMatching(path, options, document)) {
    tree.add(*object);
  }
  Drawing(tree, *document.getLibTarnCmData(), depth).draw();
}

}  // namespace tarn
