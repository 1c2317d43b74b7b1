// The laws of comparison, for random pairs of documents, and the differences beside those of a
// plain model: each document as a std::map of places to values.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "support/CapturedLog.hpp"
#include "support/describe.hpp"
#include "support/documents.hpp"
#include "support/randomDocuments.hpp"
#include "support/referenceMerge.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::Difference;
using libtarn::editor::DiffOptions;
using libtarn::editor::TarnDiff;
using tarn_test::describe;
using tarn_test::loaded;
using tarn_test::RandomDocuments;
using tarn_test::ReferenceElement;
using tarn_test::render;
using Strings = std::vector<std::string>;
using Part = Difference::Part;

Strings differences(const LibTarnDocument& older, const LibTarnDocument& newer,
                    const DiffOptions& options = {}) {
  Strings lines;
  for (const Difference& each : TarnDiff(older, newer, options).getDifferences()) {
    lines.push_back(describe(each));
  }
  return lines;
}

// The model

struct Fact {
  std::string where;  // as describe() writes it
  std::optional<std::string> value;
  std::string element;  // the fact shows only where both documents have this one
};

/// The places of a document. Their keys also hold the number of an element among those of its name.
class Facts {
 public:
  explicit Facts(const ReferenceElement& root) {
    attributes(root, {"", "tarn", "tarn"}, "");
    text(root, {"", "tarn", "tarn"});
    others(root, {"", "tarn", "tarn"}, {"cmData"});
    for (const ReferenceElement& child : root.children) {
      if (child.tag == "cmData") body(child);
    }
  }

  static Strings differences(const Facts& older, const Facts& newer) {
    Strings lines;
    const auto missing = [&lines](const Facts& from, const Facts& in, const char* sign) {
      for (const auto& [key, fact] : from.facts_) {
        if (in.facts_.count(key) > 0) continue;
        // What is in an object that only one document has is not listed.
        const std::string& object = from.objects_.at(key);
        if (!object.empty() && object != key && in.facts_.count(object) == 0) continue;
        if (!fact.element.empty() && in.facts_.count(fact.element) == 0) continue;
        const bool showsValue = fact.value && !isOther(fact);
        lines.push_back(*sign + fact.where + (showsValue ? " " + *fact.value : ""));
      }
    };
    missing(older, newer, "-");
    missing(newer, older, "+");
    for (const auto& [key, fact] : older.facts_) {
      const auto other = newer.facts_.find(key);
      if (other == newer.facts_.end() || fact.value == other->second.value) continue;
      if (isOther(fact)) {
        lines.push_back("~" + fact.where);
      } else {
        lines.push_back("~" + fact.where + " " + *fact.value + " -> " + *other->second.value);
      }
    }
    std::sort(lines.begin(), lines.end());
    return lines;
  }

 private:
  struct Place {
    std::string distName;
    std::string key;
    std::string path;
  };
  using Tags = std::vector<std::string>;

  // The contents of other elements are compared, but not listed.
  static bool isOther(const Fact& fact) { return fact.where.rfind("Other ", 0) == 0; }

  void add(const Place& place, Part part, const std::string& path, const std::string& key,
           std::optional<std::string> value, std::string element = "") {
    const std::string where =
        std::string(tarn_test::nameOf(part)) + " " + place.distName + " " + path;
    facts_[key] = {where, std::move(value), std::move(element)};
    objects_[key] = object_;
  }

  void attributes(const ReferenceElement& element, const Place& place, const std::string& keyName) {
    std::map<std::string, int> numbers;
    for (const auto& [name, value] : element.attributes) {
      const int number = numbers[name]++;
      const bool isFirstOfObject = number == 0 && element.tag == "managedObject";
      const std::string key = place.key + "@" + name + std::to_string(number);
      const bool isKey = number == 0 && name == keyName;
      const std::string element_ = isKey ? place.key : "";
      if (isFirstOfObject && name == "class") {
        add(place, Part::Class, "class", key, value);
      } else if (isFirstOfObject && name == "version") {
        add(place, Part::Version, "version", key, value);
      } else if (!(isFirstOfObject && name == "operation")) {
        add(place, Part::Attribute, place.path + "@" + name, key, value, element_);
      }
    }
  }

  static std::string join(const std::string& path, const char* name) {
    return path.empty() ? name : path + "." + name;
  }

  void text(const ReferenceElement& element, const Place& place) {
    if (element.value.empty()) return;
    add(place, Part::Text, join(place.path, "text()"), place.key + "/text", element.value);
  }

  void others(const ReferenceElement& element, const Place& place, const Tags& known) {
    std::string all;
    for (const ReferenceElement& child : element.children) {
      if (std::find(known.begin(), known.end(), child.tag) == known.end()) all += render(child);
    }
    if (all.empty()) return;
    add(place, Part::Other, join(place.path, "*"), place.key + "/other", all);
  }

  void body(const ReferenceElement& cmData) {
    const Place place{"", "cmData", "cmData"};
    add(place, Part::Body, "cmData", "cmData", std::nullopt);
    attributes(cmData, place, "");
    text(cmData, place);
    others(cmData, place, {"header", "managedObject"});
    std::map<std::string, int> numbers;
    for (const ReferenceElement& child : cmData.children) {
      if (child.tag != "managedObject") continue;
      const std::string name = child.attributeOr("distName");
      object(child, {name, "object " + name + "#" + std::to_string(numbers[name]++), ""});
    }
  }

  void object(const ReferenceElement& element, const Place& place) {
    object_ = place.key;
    add(place, Part::Object, "", place.key, std::nullopt);
    attributes(element, place, "distName");
    text(element, place);
    others(element, place, {"p", "list", "extension"});
    std::map<std::string, int> numbers;
    for (const ReferenceElement& child : element.children) {
      const std::string name = child.attributeOr("name");
      const std::string key = place.key + "/" + child.tag + " " + name;
      const Place inside{place.distName, key + "#" + std::to_string(numbers[key]++), name};
      if (child.tag == "p") scalar(child, inside, Part::Parameter, "name");
      if (child.tag == "list") list(child, inside);
      if (child.tag == "extension") group(child, inside, Part::Extension, Part::ExtensionParameter);
    }
    object_.clear();
  }

  void scalar(const ReferenceElement& element, const Place& place, Part part,
              const std::string& keyName) {
    add(place, part, place.path, place.key, element.value);
    attributes(element, place, keyName);
    others(element, place, {});
  }

  void list(const ReferenceElement& element, const Place& place) {
    add(place, Part::List, place.path, place.key, std::nullopt);
    attributes(element, place, "name");
    text(element, place);
    others(element, place, {"p", "item"});
    int position = 0;
    for (const ReferenceElement& child : element.children) {
      if (child.tag != "p" && child.tag != "item") continue;
      const std::string number = "[" + std::to_string(++position) + "]";
      const Place inside{place.distName, place.key + number + child.tag, place.path + number};
      if (child.tag == "p") scalar(child, inside, Part::ListValue, "");
      if (child.tag == "item") group(child, inside, Part::Item, Part::Component);
    }
  }

  void group(const ReferenceElement& element, const Place& place, Part part, Part partOfChild) {
    add(place, part, place.path, place.key, std::nullopt);
    attributes(element, place, part == Part::Extension ? "name" : "");
    text(element, place);
    others(element, place, {"p"});
    std::map<std::string, int> numbers;
    for (const ReferenceElement& child : element.children) {
      if (child.tag != "p") continue;
      const std::string name = child.attributeOr("name");
      const std::string key = place.key + "." + name + "#" + std::to_string(numbers[name]++);
      scalar(child, {place.distName, key, place.path + "." + name}, partOfChild, "name");
    }
  }

  std::map<std::string, Fact> facts_;
  std::map<std::string, std::string> objects_;  // of facts: the key of their object
  std::string object_;
};

// Changes of a document

class Mutator {
 public:
  explicit Mutator(unsigned seed) : random_(seed) {}

  unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

  /// Changes something in the tree, also where the format has nothing.
  void change(ReferenceElement& root) {
    ReferenceElement& element = randomElement(root);
    switch (pick(8)) {
      case 0:
        if (element.tag != "tarn" && element.tag != "cmData") element.value += "x";
        break;
      case 1:
        element.attributes.emplace_back("unit" + std::to_string(pick(2)), std::to_string(pick(3)));
        break;
      case 2:
        if (!element.attributes.empty() && element.tag != "cmData") {
          element.attributes.erase(element.attributes.begin() + pick(size(element.attributes)));
        }
        break;
      case 3:
        addChild(element);
        break;
      case 4:
        if (!element.children.empty() && element.tag != "tarn") {
          element.children.erase(element.children.begin() + pick(size(element.children)));
        }
        break;
      case 5:
        changeValue(element);
        break;
      default:
        shuffle(element);
    }
  }

  /// Changes orders that have no meaning.
  void shuffle(ReferenceElement& element) {
    shuffle(element.attributes, [](const auto& a, const auto& b) { return a.first == b.first; });
    if (element.tag != "list" && element.tag != "header" && element.tag != "tarn") {
      shuffle(element.children, [&](const auto& a, const auto& b) {
        const char* const name = a.tag == "managedObject" ? "distName" : "name";
        const bool areKnown = isKnown(element, a) && isKnown(element, b);
        // Elements that the format does not have here stay in their order.
        if (!isKnown(element, a) && !isKnown(element, b)) return true;
        return areKnown && a.tag == b.tag && a.attributeOr(name) == b.attributeOr(name);
      });
    }
  }

  void shuffleAll(ReferenceElement& element) {
    shuffle(element);
    for (ReferenceElement& child : element.children) {
      // The attributes of elements without a place are compared in their order.
      if (isKnown(element, child)) shuffleAll(child);
    }
  }

 private:
  template <class Container>
  static unsigned size(const Container& container) {
    return static_cast<unsigned>(container.size());
  }

  static bool isKnown(const ReferenceElement& parent, const ReferenceElement& child) {
    static const std::map<std::string, std::set<std::string>> KNOWN{
        {"tarn", {"cmData"}},
        {"cmData", {"header", "managedObject"}},
        {"managedObject", {"p", "list", "extension"}},
        {"list", {"p", "item"}},
        {"item", {"p"}},
        {"extension", {"p"}}};
    const auto known = KNOWN.find(parent.tag);
    return known != KNOWN.end() && known->second.count(child.tag) > 0;
  }

  // Other types and operations are refused, and other names are other elements.
  void changeValue(ReferenceElement& element) {
    if (element.tag == "p") element.value = std::to_string(pick(100));
    for (auto& [name, value] : element.attributes) {
      if (name == "class" || name == "version" || name == "unit0") value += std::to_string(pick(2));
    }
  }

  // Exchanges neighbours that may be exchanged.
  template <class Container, class IsFixed>
  void shuffle(Container& container, IsFixed isFixed) {
    for (unsigned i = 0; i < 4 * size(container); ++i) {
      const unsigned at = pick(size(container));
      if (at + 1 < size(container) && !isFixed(container[at], container[at + 1])) {
        std::swap(container[at], container[at + 1]);
      }
    }
  }

  void addChild(ReferenceElement& element) {
    static const std::vector<const char*> tags{"p", "list", "item", "extension", "managedObject"};
    if (element.tag == "tarn") return;
    const char* const tag = tags[element.tag == "cmData" ? pick(4) : pick(5)];
    ReferenceElement child{tag, tag == std::string("p") ? "new" : "", {}, {}};
    // A load refuses duplicates.
    const std::string name = "odd" + std::to_string(++names_);
    if (pick(4) != 0 || isKnown(element, child)) child.attributes.emplace_back("name", name);
    element.children.push_back(child);
  }

  ReferenceElement& randomElement(ReferenceElement& root) {
    ReferenceElement* element = &root;
    while (!element->children.empty() && pick(5) != 0) {
      ReferenceElement& child = element->children[pick(size(element->children))];
      if (child.tag == "header") break;
      element = &child;
    }
    return *element;
  }

  std::mt19937 random_;
  unsigned names_ = 0;
};

// Removing an attribute may give two objects or parameters one name, which a load refuses.
std::unique_ptr<LibTarnDocument> tryLoad(const ReferenceElement& root) {
  const tarn_test::CapturedLog log;
  auto document = std::make_unique<LibTarnDocument>();
  if (document->parse(render(root).c_str(), false) != 0) return nullptr;
  return document;
}

Strings exchanged(Strings lines) {
  for (std::string& line : lines) {
    if (line[0] != '~') {
      line[0] = line[0] == '+' ? '-' : '+';
      continue;
    }
    const std::size_t arrow = line.find(" -> ");
    if (arrow == std::string::npos) continue;
    const std::size_t value = line.find(' ', line.find(' ', line.find(' ') + 1) + 1);
    line = line.substr(0, value + 1) + line.substr(arrow + 4) + " -> " +
           line.substr(value + 1, arrow - value - 1);
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

Strings sorted(Strings lines) {
  std::sort(lines.begin(), lines.end());
  return lines;
}

// Rank of a difference within its object.
std::string rank(const Difference& difference) {
  switch (difference.part) {
    case Part::Parameter:
    case Part::List:
    case Part::ListValue:
    case Part::Item:
    case Part::Component:
    case Part::Extension:
    case Part::ExtensionParameter:
      break;
    default:
      if (!difference.name) return std::to_string(static_cast<int>(difference.part) + 10);
  }
  return "";
}

void expectOrder(const std::vector<Difference>& all) {
  for (std::size_t i = 1; i < all.size(); ++i) {
    const Difference& a = all[i - 1];
    const Difference& b = all[i];
    ASSERT_LE(std::string(a.distName), b.distName);
    if (a.newObject != b.newObject || a.oldObject != b.oldObject) continue;
    if (!rank(a).empty() && !rank(b).empty()) {
      ASSERT_LE(rank(a), rank(b));
    }
    ASSERT_FALSE(a.newObject && a.name && !b.name) << describe(b);
    if (a.part == Part::Parameter && b.part == Part::Parameter) {
      ASSERT_LE(std::string(a.name), b.name);
    }
    ASSERT_FALSE(a.part == Part::Extension && b.part == Part::Parameter);
    ASSERT_FALSE(a.part == Part::List && b.part == Part::Parameter);
    ASSERT_FALSE(a.part == Part::Extension && b.part == Part::List);
  }
}

// A document and one made from it by a delta, by changes, or both.
struct Models {
  ReferenceElement older;
  ReferenceElement newer;
};

Models randomModels(unsigned seed) {
  RandomDocuments documents(seed);
  Mutator mutator(seed);
  Models models{documents.source(), {}};
  for (unsigned i = mutator.pick(3); i > 0; --i) mutator.change(models.older);
  models.newer = models.older;
  if (seed % 3 != 0) {
    ReferenceElement delta = documents.delta(models.newer, 1000);
    tarn_test::referenceMerge(models.newer, delta);
  }
  for (unsigned i = mutator.pick(6); i > 0; --i) mutator.change(models.newer);
  return models;
}

TEST(RandomDiffTest, DifferencesAreThoseOfTheModel) {
  unsigned compared = 0;
  std::map<std::string, unsigned> seen;
  for (unsigned seed = 0; seed < 4000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Models models = randomModels(seed);
    const auto older = tryLoad(models.older);
    const auto newer = tryLoad(models.newer);
    if (!older || !newer) continue;
    ++compared;
    const Strings lines = differences(*older, *newer);
    ASSERT_EQ(sorted(lines), Facts::differences(Facts(models.older), Facts(models.newer)))
        << render(models.older) << "\n"
        << render(models.newer);
    ASSERT_NO_FATAL_FAILURE(expectOrder(TarnDiff(*older, *newer).getDifferences()));
    for (const std::string& line : lines) ++seen[line.substr(0, line.find(' '))];
  }
  EXPECT_GT(compared, 3000U);
  // Each part is among them, added, removed or changed.
  for (const char* each : {"+Object",
                           "-Object",
                           "~Class",
                           "~Version",
                           "+Attribute",
                           "-Attribute",
                           "~Attribute",
                           "+Text",
                           "~Text",
                           "+Other",
                           "-Other",
                           "+Parameter",
                           "-Parameter",
                           "~Parameter",
                           "+List",
                           "-List",
                           "+ListValue",
                           "-ListValue",
                           "~ListValue",
                           "+Item",
                           "-Item",
                           "+Component",
                           "-Component",
                           "~Component",
                           "+Extension",
                           "-Extension",
                           "+ExtensionParameter",
                           "-ExtensionParameter",
                           "~ExtensionParameter"}) {
    EXPECT_GT(seen[each], 0U) << each;
  }
}

TEST(RandomDiffTest, ExchangedDocumentsHaveExchangedDifferences) {
  for (unsigned seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Models models = randomModels(seed);
    const auto older = tryLoad(models.older);
    const auto newer = tryLoad(models.newer);
    if (!older || !newer) continue;
    const DiffOptions all{true, true, true};
    ASSERT_EQ(exchanged(differences(*older, *newer, all)),
              sorted(differences(*newer, *older, all)));
  }
}

TEST(RandomDiffTest, EqualDocumentsHaveNoneWhateverTheirOrder) {
  for (unsigned seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Models models = randomModels(seed);
    const auto older = tryLoad(models.older);
    const auto newer = tryLoad(models.newer);
    if (!older || !newer) continue;
    ASSERT_EQ(differences(*older, *older), Strings());
    ASSERT_EQ(differences(*older, *tryLoad(models.older)), Strings());
    ReferenceElement shuffled = models.older;
    Mutator(seed).shuffleAll(shuffled);
    const auto other = tryLoad(shuffled);
    ASSERT_TRUE(other);
    ASSERT_EQ(differences(*older, *other), Strings()) << render(models.older) << "\n"
                                                      << render(shuffled);
    ASSERT_EQ(differences(*older, *newer), differences(*other, *newer));
    ASSERT_EQ(differences(*newer, *older), differences(*newer, *other));
  }
}

}  // namespace
