#pragma once

#include <cstddef>
#include <map>
#include <string_view>
#include <vector>

namespace libtarn {
namespace util {
namespace xml {

/// The elements whose end tag is still to come.
class OpenElements {
 public:
  struct Element {
    std::size_t offset;  // of its "<"
    std::size_t nameSize;
    bool isReported;  // that its end tag is wrong
  };

  explicit OpenElements(std::string_view text) : text_(text) {}

  bool isEmpty() const { return elements_.empty(); }
  Element& innermost() { return elements_.back(); }
  std::string_view name(const Element& element) const {
    return text_.substr(element.offset + 1, element.nameSize);
  }

  void push(std::size_t offset, std::size_t nameSize) {
    elements_.push_back({offset, nameSize, false});
    if (areCounted_) ++counts_[name(elements_.back())];
  }

  void pop() {
    if (areCounted_) {
      const auto found = counts_.find(name(elements_.back()));
      if (--found->second == 0) counts_.erase(found);
    }
    elements_.pop_back();
  }

  /// Whether one of this name is open. The first question counts the names, so that documents
  /// without a wrong end tag pay nothing for it.
  bool contains(std::string_view wanted) {
    if (!areCounted_) {
      for (const Element& element : elements_) ++counts_[name(element)];
      areCounted_ = true;
    }
    return counts_.count(wanted) != 0;
  }

 private:
  std::string_view text_;
  std::vector<Element> elements_;
  bool areCounted_ = false;
  std::map<std::string_view, std::size_t> counts_;
};

}  // namespace xml
}  // namespace util
}  // namespace libtarn
