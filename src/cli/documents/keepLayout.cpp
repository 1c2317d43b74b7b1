#include "documents/keepLayout.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "documents/XmlOutline.hpp"

// Both texts are read as trees of elements, without a model of the document. From the root on, an
// element of the one is paired with an element of the other; of two that are paired, attributes
// and value are compared, and their children are paired by tag and name. What has no partner is cut
// or inserted. Each difference is a patch of the original text, and all are applied in one pass.

namespace tarn {

namespace {

using Element = XmlOutline::Element;
using Numbers = std::vector<std::uint32_t>;

constexpr std::uint32_t NONE = XmlOutline::NONE;

/// Replaces the bytes from `begin` to `end`.
struct Patch {
  std::size_t begin;
  std::size_t end;
  std::string text;
};

bool isSameText(std::string_view a, std::string_view b) {
  if (a == b) return true;
  const bool hasReference = a.find('&') != a.npos || b.find('&') != b.npos;
  return hasReference && withoutReferences(a) == withoutReferences(b);
}

bool isLineBlank(char c) { return c == ' ' || c == '\t'; }

// Returns the value that the element has in a loaded document.
std::string_view valueOf(const XmlOutline& outline, const Element& element) {
  if (!element.hasValue) return {};
  return outline.between(element.valueBegin, element.valueEnd);
}

std::string_view printedValueOf(const XmlOutline& outline, const Element& element) {
  if (element.firstChild != NONE) return {};
  return outline.between(element.contentBegin, element.contentEnd);
}

/// What pairs children: tag and name; without a name the value.
struct Key {
  std::string text;
  bool isNamed = false;
};

Key keyOf(const XmlOutline& outline, const Element& element, std::string_view value) {
  Key key{std::string(outline.tag(element)), false};
  for (const XmlOutline::Attribute& attribute : outline.attributes(element)) {
    if (attribute.name != "name" && attribute.name != "distName") continue;
    key.isNamed = true;
    key.text += '\0';
    key.text += withoutReferences(attribute.value);
    return key;
  }
  key.text += '\n';
  key.text += withoutReferences(value);
  return key;
}

/// The children of two paired elements, and which of the original's each new one is.
struct Pairing {
  Pairing(const XmlOutline& original, const Element& parent, const XmlOutline& printed,
          const Element& printedParent)
      : original_(original),
        printed_(printed),
        older(original.children(parent)),
        newer(printed.children(printedParent)),
        partners(newer.size(), NONE) {
    std::size_t begin = 0;
    const std::size_t least = std::min(older.size(), newer.size());
    for (; begin < least && isSame(begin, begin); ++begin) pair(begin, begin);
    std::size_t olderEnd = older.size();
    std::size_t newerEnd = newer.size();
    for (; std::min(olderEnd, newerEnd) > begin && isSame(olderEnd - 1, newerEnd - 1);) {
      pair(--olderEnd, --newerEnd);
    }
    pairByKey(begin, olderEnd, newerEnd);
    pairUnnamed();
  }

 private:
  const XmlOutline& original_;
  const XmlOutline& printed_;

 public:
  Numbers older;
  Numbers newer;
  Numbers partners;  ///< Of each of `newer` the position in `older`, or NONE. They ascend.

 private:
  Key olderKey(std::size_t at) const {
    const Element& element = original_[older[at]];
    return keyOf(original_, element, valueOf(original_, element));
  }
  Key newerKey(std::size_t at) const {
    const Element& element = printed_[newer[at]];
    return keyOf(printed_, element, printedValueOf(printed_, element));
  }
  bool isSame(std::size_t old, std::size_t now) const {
    const Element& a = original_[older[old]];
    const Element& b = printed_[newer[now]];
    if (original_.between(a.begin, a.contentBegin) == printed_.between(b.begin, b.contentBegin)) {
      if (a.firstChild != NONE && b.firstChild != NONE) return true;
      const bool areLeaves = a.firstChild == NONE && b.firstChild == NONE;
      if (areLeaves &&
          original_.between(a.contentBegin, a.end) == printed_.between(b.contentBegin, b.end)) {
        return true;
      }
    }
    return olderKey(old).text == newerKey(now).text;
  }
  void pair(std::size_t old, std::size_t now) { partners[now] = static_cast<std::uint32_t>(old); }

  // Of several with one key the first that keeps the order is the partner.
  void pairByKey(std::size_t begin, std::size_t olderEnd, std::size_t newerEnd) {
    std::vector<std::pair<std::string, std::size_t>> keys;
    for (std::size_t i = begin; i < olderEnd; ++i) keys.emplace_back(olderKey(i).text, i);
    std::sort(keys.begin(), keys.end());
    std::size_t next = begin;
    for (std::size_t i = begin; i < newerEnd; ++i) {
      const std::pair<std::string, std::size_t> first(newerKey(i).text, next);
      const auto found = std::lower_bound(keys.begin(), keys.end(), first);
      if (found == keys.end() || found->first != first.first) continue;
      pair(found->second, i);
      next = found->second + 1;
    }
  }

  // Between two pairs, elements without a name that have one tag are one with another value.
  void pairUnnamed() {
    std::size_t old = 0;
    std::size_t limit = 0;
    std::size_t ahead = 0;  // the first of `newer`, from here on, that has a partner
    for (std::size_t i = 0; i < newer.size(); ++i) {
      if (partners[i] != NONE) {
        old = partners[i] + std::size_t{1};
        continue;
      }
      if (ahead <= i) {
        for (ahead = i; ahead < newer.size() && partners[ahead] == NONE;) ++ahead;
        limit = ahead < newer.size() ? partners[ahead] : older.size();
      }
      if (newerKey(i).isNamed) continue;
      old = skipNamed(old, limit);
      if (old == limit) continue;
      if (original_.tag(original_[older[old]]) == printed_.tag(printed_[newer[i]])) pair(old++, i);
    }
  }

  // Looks at each of the older ones once.
  std::size_t skipNamed(std::size_t at, std::size_t limit) {
    at = std::min(at, limit);
    if (at < limit && unnamed_ == at) return at;
    while (at < limit && olderKey(at).isNamed) ++at;
    unnamed_ = at;
    return at;
  }

  std::size_t unnamed_ = SIZE_MAX;  // the last one that skipNamed() found
};

class Patcher {
 public:
  Patcher(const XmlOutline& original, const XmlOutline& printed)
      : original_(original), printed_(printed), text_(original.text()) {
    const std::size_t end = text_.find('\n');
    newline_ = end != text_.npos && end > 0 && text_[end - 1] == '\r' ? "\r\n" : "\n";
    findUnit();
  }

  std::optional<std::string> run() {
    if (original_.tag(original_[0]) != printed_.tag(printed_[0])) return std::nullopt;
    pending_.emplace_back(0, 0);
    while (!pending_.empty()) {
      const auto [old, now] = pending_.back();
      pending_.pop_back();
      if (!patchElement(original_[old], printed_[now])) return std::nullopt;
    }
    return apply();
  }

 private:
  void addPatch(std::size_t begin, std::size_t end, std::string text) {
    patches_.push_back({begin, end, std::move(text)});
  }

  // Returns the white space before the element if it is the first of its line.
  std::optional<std::string_view> indentation(const Element& element) const {
    std::size_t begin = element.begin;
    while (begin > 0 && isLineBlank(text_[begin - 1])) --begin;
    if (begin > 0 && text_[begin - 1] != '\n') return std::nullopt;
    return original_.between(begin, element.begin);
  }

  // The white space by which the first element that has some stands behind its parent.
  void findUnit() {
    for (std::uint32_t parent = 0; original_[parent].firstChild != NONE;) {
      const std::uint32_t child = original_[parent].firstChild;
      const auto outer = indentation(original_[parent]);
      const auto inner = indentation(original_[child]);
      parent = child;
      if (!outer || !inner || inner->size() <= outer->size()) continue;
      if (inner->substr(0, outer->size()) != *outer) continue;
      unit_ = inner->substr(outer->size());
      return;
    }
  }

  bool patchElement(const Element& old, const Element& now) {
    patchAttributes(old, now);
    if (old.firstChild != NONE || now.firstChild != NONE) {
      patchChildren(old, now);
      // The text of an element that had children, and has none, is printed.
      return now.firstChild != NONE ||
             isSameText(valueOf(original_, old), printedValueOf(printed_, now));
    }
    patchValue(old, now);
    return true;
  }

  // Attributes that a document keeps, keep their order; new ones follow.
  void patchAttributes(const Element& old, const Element& now) {
    if (original_.between(old.begin, old.contentBegin) ==
        printed_.between(now.begin, now.contentBegin)) {
      return;
    }
    const auto newer = printed_.attributes(now);
    auto next = newer.begin();
    std::size_t end = old.begin + 1 + original_.tag(old).size();
    for (const XmlOutline::Attribute& attribute : original_.attributes(old)) {
      if (next == newer.end() || next->name != attribute.name) {
        addPatch(end, attribute.end, "");
      } else {
        patchAttribute(attribute, *next++);
      }
      end = attribute.end;
    }
    std::string added;
    for (; next != newer.end(); ++next) {
      added += ' ';
      added += printed_.between(next->begin, next->end);
    }
    if (!added.empty()) addPatch(end, end, std::move(added));
  }

  void patchAttribute(const XmlOutline::Attribute& old, const XmlOutline::Attribute& now) {
    if (isSameText(old.value, now.value)) return;
    const char quote = text_[old.end - 1];
    std::string value;
    for (const char c : now.value) {
      if (c == quote) {
        value += quote == '"' ? "&quot;" : "&apos;";
      } else {
        value += c;
      }
    }
    addPatch(old.end - 1 - old.value.size(), old.end - 1, std::move(value));
  }

  void patchValue(const Element& old, const Element& now) {
    const std::string_view value = printedValueOf(printed_, now);
    if (isSameText(valueOf(original_, old), value)) return;
    if (old.isEmptyTag()) {
      openEmptyTag(old, std::string(value));
    } else if (value.empty()) {
      // Texts behind a comment would become the value.
      addPatch(old.contentBegin, old.contentEnd, "");
    } else {
      addPatch(old.valueBegin, old.valueEnd, std::string(value));
    }
  }

  void openEmptyTag(const Element& element, const std::string& content) {
    std::size_t begin = element.end - std::size_t{2};
    while (isXmlBlank(text_[begin - 1])) --begin;
    std::string text = ">" + content + "</";
    text += original_.tag(element);
    addPatch(begin, element.end, text + ">");
  }

  void patchChildren(const Element& old, const Element& now) {
    const Pairing pairing(original_, old, printed_, now);
    std::size_t next = 0;       // of the older ones that have not been looked at
    std::uint32_t last = NONE;  // of the older ones that stay
    Numbers added;
    for (std::size_t i = 0; i < pairing.newer.size(); ++i) {
      const std::uint32_t partner = pairing.partners[i];
      if (partner == NONE) {
        added.push_back(pairing.newer[i]);
        continue;
      }
      insert(added, old, last);
      while (next < partner) remove(original_[pairing.older[next++]]);
      ++next;
      last = pairing.older[partner];
      pending_.emplace_back(last, pairing.newer[i]);
    }
    insert(added, old, last);
    while (next < pairing.older.size()) remove(original_[pairing.older[next++]]);
    flushRemoved();
  }

  // Elements of one line are cut together, so that no line of white space stays.
  void remove(const Element& element) {
    std::size_t end = removedEnd_;
    while (end < element.begin && isLineBlank(text_[end])) ++end;
    if (removedEnd_ == 0 || end != element.begin) {
      flushRemoved();
      removedBegin_ = element.begin;
    }
    removedEnd_ = element.end;
  }

  void flushRemoved() {
    if (removedEnd_ == 0) return;
    std::size_t begin = removedBegin_;
    std::size_t end = std::exchange(removedEnd_, 0);
    while (begin > 0 && isLineBlank(text_[begin - 1])) --begin;
    while (end < text_.size() && isLineBlank(text_[end])) ++end;
    if (text_.substr(end, 2) == "\r\n") ++end;
    const bool isWholeLine =
        begin > 0 && text_[begin - 1] == '\n' && end < text_.size() && text_[end] == '\n';
    if (isWholeLine) return addPatch(begin, end + 1, "");
    while (isLineBlank(text_[end - 1]) || text_[end - 1] == '\r') --end;
    addPatch(removedBegin_, end, "");
  }

  // Where what is added behind an element goes: behind the comments on its line, too.
  std::size_t behind(const Element& element) const {
    std::size_t at = element.end;
    for (;;) {
      while (at < text_.size() && isLineBlank(text_[at])) ++at;
      if (at == text_.size()) return element.end;
      if (text_[at] == '\n') return text_[at - 1] == '\r' ? at - 1 : at;
      if (text_[at] == '\r') {
        ++at;
        continue;
      }
      if (text_.substr(at, 4) != "<!--") return element.end;
      const std::size_t end = text_.find("-->", at + 4);
      if (end == text_.npos) return element.end;
      at = end + 3;
    }
  }

  // Inserts the elements `added` behind the child `last` of `parent`, or before all children, and
  // clears `added`.
  void insert(Numbers& added, const Element& parent, std::uint32_t last) {
    flushRemoved();
    if (added.empty()) return;
    const std::uint32_t sibling = last != NONE ? last : parent.firstChild;
    const auto outer = indentation(parent);
    std::optional<std::string> indent;
    if (sibling != NONE) {
      const auto found = indentation(original_[sibling]);
      if (found) indent = std::string(*found);
    } else if (outer) {
      indent = std::string(*outer) + unit_;
    }
    std::string text;
    for (const std::uint32_t number : added) print(number, indent, text);
    added.clear();
    if (last != NONE) {
      const std::size_t at = indent ? behind(original_[last]) : original_[last].end;
      return addPatch(at, at, std::move(text));
    }
    const std::string lineOfEnd = indent && outer ? newline_ + std::string(*outer) : "";
    if (parent.isEmptyTag()) return openEmptyTag(parent, text + lineOfEnd);
    const std::string_view content = original_.between(parent.contentBegin, parent.contentEnd);
    if (parent.firstChild == NONE && content.find('\n') == content.npos) text += lineOfEnd;
    addPatch(parent.contentBegin, parent.contentBegin, std::move(text));
  }

  // Appends an element of the printed text, on lines of its own if there is an indentation.
  void print(std::uint32_t top, const std::optional<std::string>& indent, std::string& out) const {
    Numbers open;
    const auto startLine = [&] {
      if (!indent) return;
      out += newline_ + *indent;
      for (std::size_t i = 0; i < open.size(); ++i) out += unit_;
    };
    for (std::uint32_t next = top;;) {
      const Element& element = printed_[next];
      startLine();
      out += printed_.between(element.begin, element.contentBegin);
      if (element.firstChild != NONE) {
        open.push_back(next);
        next = element.firstChild;
        continue;
      }
      out += printed_.between(element.contentBegin, element.end);
      while (!open.empty() && printed_[next].nextSibling == NONE) {
        next = open.back();
        open.pop_back();
        startLine();
        out += printed_.between(printed_[next].contentEnd, printed_[next].end);
      }
      if (open.empty()) return;
      next = printed_[next].nextSibling;
    }
  }

  std::optional<std::string> apply() {
    std::stable_sort(patches_.begin(), patches_.end(),
                     [](const Patch& a, const Patch& b) { return a.begin < b.begin; });
    std::string out;
    out.reserve(text_.size() + text_.size() / 16);
    std::size_t at = 0;
    for (const Patch& patch : patches_) {
      if (patch.begin < at) return std::nullopt;
      out += original_.between(at, patch.begin);
      out += patch.text;
      at = patch.end;
    }
    out += text_.substr(at);
    return out;
  }

  const XmlOutline& original_;
  const XmlOutline& printed_;
  std::string_view text_;
  std::string newline_;
  std::string unit_ = " ";
  std::vector<std::pair<std::uint32_t, std::uint32_t>> pending_;
  std::vector<Patch> patches_;
  std::size_t removedBegin_ = 0;
  std::size_t removedEnd_ = 0;  // 0: nothing is being cut
};

}  // namespace

std::optional<std::string> keepLayout(std::string_view original, std::string_view printed) {
  const auto older = XmlOutline::read(original);
  const auto newer = XmlOutline::read(printed);
  if (!older || !newer) return std::nullopt;
  return Patcher(*older, *newer).run();
}

}  // namespace tarn
