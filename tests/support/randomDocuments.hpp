#pragma once

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/ReferenceTree.hpp"

namespace tarn_test {

/// Makes random documents as reference trees; the same ones for the same seed.
class RandomDocuments {
 public:
  explicit RandomDocuments(unsigned seed) : random_(seed) {}

  /// A document of a few objects.
  ReferenceElement source() {
    ReferenceElement root = document(pick(8) == 0 ? 60 : 5);
    const unsigned count = pick(12);
    for (unsigned made = 0; made < count;) made += addObject(root, randomName(), "") ? 1 : 0;
    return root;
  }

  /// A delta. Most fit the source; about one object in `conflictOdds` does not.
  ReferenceElement delta(ReferenceElement& source, unsigned conflictOdds) {
    ReferenceElement root = document(4);
    for (unsigned count = pick(8); count > 0; --count) {
      const std::string* const name = randomName();
      bool isThere = has(*source.firstChild("cmData"), "managedObject", "distName", name);
      if (pick(conflictOdds) == 0) isThere = !isThere;
      addObject(root, name, operationFor(isThere));
    }
    return root;
  }

 private:
  unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

  // One of these, or null.
  const std::string* randomName() {
    static const std::vector<std::string> names = [] {
      std::vector<std::string> made{""};
      for (int i = 0; i < 14; ++i) made.push_back("A-" + std::to_string(i));
      return made;
    }();
    if (pick(15) == 0) return pick(2) == 0 ? nullptr : &names[0];
    return &names[1 + pick(14)];
  }

  const char* operationFor(bool isThere) {
    switch (pick(4)) {
      case 0:
        return "";
      case 1:
        return "auto";
      case 2:
        return isThere ? "update" : "create";
      default:
        return isThere ? "delete" : "create";
    }
  }

  static ReferenceElement element(const char* tag, std::string value = "") {
    return ReferenceElement{tag, std::move(value), {}, {}};
  }

  static bool has(const ReferenceElement& owner, const char* tag, const char* key,
                  const std::string* name) {
    return std::any_of(owner.children.begin(), owner.children.end(), [&](const auto& child) {
      return child.tag == tag && child.attributeOr(key) == (name ? *name : "");
    });
  }

  ReferenceElement document(unsigned mostLogs) {
    ReferenceElement cmData = element("cmData");
    cmData.setAttribute("type", "plan");
    if (pick(6) != 0) {
      ReferenceElement header = element("header");
      for (unsigned count = pick(mostLogs); count > 0; --count) {
        ReferenceElement log = element("log", text());
        log.setAttribute("action", "a" + std::to_string(pick(100)));
        log.setAttribute("dateTime", "d");
        header.children.push_back(log);
      }
      cmData.children.push_back(header);
    }
    ReferenceElement root = element("tarn");
    root.setAttribute("xmlns", "tarn21.xsd");
    root.setAttribute("version", "2.1");
    root.children.push_back(cmData);
    return root;
  }

  // Returns false when there is one with that name.
  bool addObject(ReferenceElement& root, const std::string* name, const std::string& operation) {
    ReferenceElement& cmData = *root.firstChild("cmData");
    if (has(cmData, "managedObject", "distName", name)) return false;
    ReferenceElement object = element("managedObject");
    object.setAttribute("class", "C" + std::to_string(pick(3)));
    if (pick(2) == 0) object.setAttribute("version", "1");
    if (name) object.setAttribute("distName", *name);
    if (!operation.empty()) object.setAttribute("operation", operation);
    for (unsigned count = pick(7); count > 0; --count) addChild(object);
    cmData.children.push_back(object);
    return true;
  }

  void addChild(ReferenceElement& object) {
    static const std::vector<std::string> names{"", "a", "b", "c"};
    static const std::vector<const char*> tags{"p", "list", "extension"};
    ReferenceElement child = element(tags[pick(3)]);
    const std::string* const name = pick(9) == 0 ? nullptr : &names[pick(4)];
    if (child.tag != "extension" && has(object, child.tag.c_str(), "name", name)) return;
    if (name) child.setAttribute("name", *name);
    if (child.tag == "p") {
      child.value = text();
    } else if (child.tag == "extension") {
      child.children = parameters();
    } else {
      const bool hasItems = pick(2) == 0;
      for (unsigned i = pick(4); i > 0; --i) {
        child.children.push_back(hasItems ? element("item") : element("p", text()));
        if (hasItems) child.children.back().children = parameters();
      }
    }
    object.children.push_back(child);
  }

  std::string text() {
    return std::vector<std::string>{"", "1", "two", "a & b", "longer than the others"}[pick(5)];
  }

  std::vector<ReferenceElement> parameters() {
    std::vector<ReferenceElement> made;
    for (unsigned i = pick(3); i > 0; --i) {
      made.push_back(element("p", text()));
      made.back().setAttribute("name", "n" + std::to_string(i));
    }
    return made;
  }

  std::mt19937 random_;
};

/// The text of a document of RandomDocuments, whose texts hold one character that needs a
/// reference.
inline std::string render(const ReferenceElement& element) {
  std::string text = "<" + element.tag;
  for (const auto& [name, value] : element.attributes) text += " " + name + "='" + value + "'";
  text += '>';
  for (const char each : element.value) text += each == '&' ? "&amp;" : std::string(1, each);
  for (const ReferenceElement& child : element.children) text += render(child);
  return text + "</" + element.tag + ">";
}

}  // namespace tarn_test
