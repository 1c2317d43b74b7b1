#include "documents/sortedText.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "documents/XmlOutline.hpp"
#include "text/naturalOrder.hpp"

namespace tarn {

namespace {

using Element = XmlOutline::Element;
using Attribute = XmlOutline::Attribute;

/// A child and what orders it among its siblings.
struct Child {
  std::uint32_t number;
  int rank;
  bool isObject;
  std::string name;
};

// Elements without a place in the format keep their order behind all others.
constexpr int LAST = 4;

int rankOf(std::string_view parent, std::string_view tag) {
  if (parent == "cmData") return tag == "header" ? 0 : tag == "managedObject" ? 1 : LAST;
  if (parent == "managedObject") {
    return tag == "p" ? 1 : tag == "list" ? 2 : tag == "extension" ? 3 : LAST;
  }
  if (parent == "item" || parent == "extension") return tag == "p" ? 1 : LAST;
  return LAST;
}

bool isBefore(const Child& a, const Child& b) {
  if (a.rank != b.rank) return a.rank < b.rank;
  if (a.rank == LAST) return false;
  return a.isObject ? isNaturallyBefore(a.name, b.name) : a.name < b.name;
}

/// Writes elements in order. The open ones, with those children that are still to be written, are a
/// stack.
class SortedPrint {
 public:
  explicit SortedPrint(const XmlOutline& outline) : outline_(outline) {}

  std::string run() {
    const Element& root = outline_[0];
    out_.reserve(outline_.text().size());
    out_ += outline_.between(0, root.begin);
    open(root);
    while (!open_.empty()) {
      Open& last = open_.back();
      if (last.next < last.children.size()) {
        open(outline_[last.children[last.next++]]);
      } else {
        startLine(open_.size() - 1);
        out_ += outline_.between(last.element->contentEnd, last.element->end);
        open_.pop_back();
      }
    }
    out_ += outline_.text().substr(root.end);
    return std::move(out_);
  }

 private:
  struct Open {
    const Element* element;
    std::vector<std::uint32_t> children;
    std::size_t next;
  };

  void startLine(std::size_t depth) {
    out_ += '\n';
    out_.append(depth, ' ');
  }

  void open(const Element& element) {
    if (!open_.empty()) startLine(open_.size());
    writeStartTag(element);
    if (element.firstChild == XmlOutline::NONE) {
      out_ += outline_.between(element.contentBegin, element.end);
    } else {
      open_.push_back({&element, sortedChildren(element), 0});
    }
  }

  void writeStartTag(const Element& element) {
    std::vector<Attribute> attributes = outline_.attributes(element);
    const auto isNameBefore = [](const Attribute& a, const Attribute& b) {
      return a.name < b.name;
    };
    if (std::is_sorted(attributes.begin(), attributes.end(), isNameBefore)) {
      out_ += outline_.between(element.begin, element.contentBegin);
      return;
    }
    std::stable_sort(attributes.begin(), attributes.end(), isNameBefore);
    out_ += '<';
    out_ += outline_.tag(element);
    for (const Attribute& attribute : attributes) {
      out_ += ' ';
      out_ += outline_.between(attribute.begin, attribute.end);
    }
    out_ += '>';
  }

  std::vector<std::uint32_t> sortedChildren(const Element& parent) const {
    std::vector<std::uint32_t> numbers = outline_.children(parent);
    const std::string_view parentTag = outline_.tag(parent);
    std::vector<Child> children;
    children.reserve(numbers.size());
    for (const std::uint32_t number : numbers) {
      const std::string_view tag = outline_.tag(outline_[number]);
      const int rank = rankOf(parentTag, tag);
      const bool isObject = tag == "managedObject";
      children.push_back({number, rank, isObject, rank == LAST ? "" : nameOf(number, isObject)});
    }
    std::stable_sort(children.begin(), children.end(), isBefore);
    for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = children[i].number;
    return numbers;
  }

  std::string nameOf(std::uint32_t number, bool isObject) const {
    for (const Attribute& attribute : outline_.attributes(outline_[number])) {
      if (attribute.name == (isObject ? "distName" : "name")) {
        return withoutReferences(attribute.value);
      }
    }
    return "";
  }

  const XmlOutline& outline_;
  std::vector<Open> open_;
  std::string out_;
};

}  // namespace

std::optional<std::string> sortedText(std::string_view printed) {
  const auto outline = XmlOutline::read(printed);
  if (!outline) return std::nullopt;
  return SortedPrint(*outline).run();
}

}  // namespace tarn
