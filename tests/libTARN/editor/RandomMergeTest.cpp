// Random sources and deltas, merged by the library and by a plain model of standard containers. The
// results are compared element by element.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "editor/TarnMerge.hpp"
#include "libtarn.hpp"
#include "support/CapturedLog.hpp"
#include "support/HeapDocument.hpp"
#include "support/treeDump.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::TarnMerge;
using tarn_test::CapturedLog;
using tarn_test::HeapDocument;
using Name = std::optional<std::string>;  // absent: no attribute

constexpr std::size_t MOST_LOGS = 50;

struct Child {
  std::string tag;
  Name name;
  std::string content;  // text or children, as XML

  std::string key() const { return name.value_or(""); }
  std::string render() const {
    return "<" + tag + (name ? " name='" + *name + "'" : "") + ">" + content + "</" + tag + ">";
  }
};

struct Object {
  Name name;
  Name operation;
  std::string attributes;  // the others, as XML
  std::vector<Child> children;

  std::string key() const { return name.value_or(""); }
  std::string render() const {
    std::string text = "<managedObject " + attributes + (name ? " distName='" + *name + "'" : "") +
                       (operation ? " operation='" + *operation + "'" : "") + ">";
    for (const Child& child : children) text += child.render();
    return text + "</managedObject>";
  }
};

struct Document {
  std::optional<std::vector<std::string>> logs;  // absent: no header
  std::vector<Object> objects;

  auto find(const std::string& key) {
    return std::find_if(objects.begin(), objects.end(),
                        [&](const Object& object) { return object.key() == key; });
  }
  std::string render() const {
    std::string text = "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'>";
    if (logs) {
      text += "<header>";
      for (const std::string& log : *logs) text += log;
      text += "</header>";
    }
    for (const Object& object : objects) text += object.render();
    return text + "</cmData></tarn>";
  }
};

// The model of the merge

std::vector<Child> childrenInOrderOfNames(const Object& object, const std::string& tag) {
  std::map<std::string, Child> sorted;
  for (const Child& child : object.children) {
    if (child.tag == tag) sorted.insert({child.key(), child});
  }
  std::vector<Child> children;
  for (const auto& entry : sorted) children.push_back(entry.second);
  return children;
}

void replaceChild(Object& object, const Child& child) {
  auto& children = object.children;
  children.erase(std::remove_if(children.begin(), children.end(),
                                [&](const Child& other) {
                                  return other.tag == child.tag && other.key() == child.key();
                                }),
                 children.end());
  children.push_back(child);
}

void update(Object& source, const Object& delta) {
  for (const Child& parameter : childrenInOrderOfNames(delta, "p")) {
    const auto found = std::find_if(
        source.children.begin(), source.children.end(),
        [&](const Child& child) { return child.tag == "p" && child.key() == parameter.key(); });
    if (found == source.children.end()) {
      source.children.push_back(parameter);
    } else {
      found->content = parameter.content;
    }
  }
  for (const Child& list : childrenInOrderOfNames(delta, "list")) replaceChild(source, list);
  for (const Child& child : delta.children) {
    if (child.tag == "extension") replaceChild(source, child);
  }
}

std::string explicitOperation(const Object& delta, bool isThere) {
  const std::string operation = delta.operation.value_or("auto");
  if (operation != "auto") return operation;
  return isThere ? "update" : "create";
}

bool conflicts(const Object& delta, bool isThere) {
  return isThere == (explicitOperation(delta, isThere) == "create");
}

void apply(Document& source, const Object& delta) {
  const auto there = source.find(delta.key());
  const std::string operation = explicitOperation(delta, there != source.objects.end());
  if (operation == "create") {
    source.objects.push_back(delta);
  } else if (operation == "delete") {
    source.objects.erase(there);
  } else {
    update(*there, delta);
  }
}

// Also writes the operations that "auto" comes to into the delta.
bool merge(Document& source, Document& delta) {
  std::map<std::string, Object*> sorted;
  for (Object& object : delta.objects) sorted[object.key()] = &object;
  for (const auto& [name, object] : sorted) {
    if (conflicts(*object, source.find(name) != source.objects.end())) return false;
  }
  for (const auto& [name, object] : sorted) {
    object->operation = explicitOperation(*object, source.find(name) != source.objects.end());
    apply(source, *object);
  }
  if (!source.logs || !delta.logs || delta.logs->empty()) return true;
  source.logs->insert(source.logs->end(), delta.logs->begin(), delta.logs->end());
  if (source.logs->size() > MOST_LOGS) {
    source.logs->erase(source.logs->begin(),
                       source.logs->end() - static_cast<std::ptrdiff_t>(MOST_LOGS));
  }
  return true;
}

// Random documents

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

  Document source() {
    Document document;
    document.logs = logs(pick(8) == 0 ? 60 : 5);
    const unsigned count = pick(12);
    while (document.objects.size() < count) addObject(document, randomName(), {});
    return document;
  }

  // Most deltas fit the source; about one object in `conflictOdds` does not.
  Document delta(Document& source, unsigned conflictOdds) {
    Document document;
    document.logs = logs(4);
    for (unsigned count = pick(8); count > 0; --count) {
      const Name name = randomName();
      bool isThere = source.find(name.value_or("")) != source.objects.end();
      if (pick(conflictOdds) == 0) isThere = !isThere;
      addObject(document, name, operationFor(isThere));
    }
    return document;
  }

 private:
  Name randomName() {
    if (pick(15) == 0) return pick(2) == 0 ? Name() : Name("");
    return "A-" + std::to_string(pick(14));
  }

  Name operationFor(bool isThere) {
    switch (pick(4)) {
      case 0:
        return Name();
      case 1:
        return "auto";
      case 2:
        return isThere ? "update" : "create";
      default:
        return isThere ? "delete" : "create";
    }
  }

  void addObject(Document& document, const Name& name, const Name& operation) {
    if (document.find(name.value_or("")) != document.objects.end()) {
      // A name of the source that is taken gives way, or the documents would never fill.
      return;
    }
    Object object;
    object.name = name;
    object.operation = operation;
    object.attributes =
        "class='C" + std::to_string(pick(3)) + "'" + (pick(2) ? " version='1'" : "");
    for (unsigned count = pick(7); count > 0; --count) addChild(object);
    document.objects.push_back(object);
  }

  void addChild(Object& object) {
    Child child;
    child.tag = std::vector<std::string>{"p", "list", "extension"}[pick(3)];
    child.name = pick(9) == 0 ? Name() : Name(std::vector<std::string>{"", "a", "b", "c"}[pick(4)]);
    const bool isTaken = std::any_of(
        object.children.begin(), object.children.end(),
        [&](const Child& other) { return other.tag == child.tag && other.key() == child.key(); });
    if (isTaken && child.tag != "extension") return;
    child.content = child.tag == "p" ? text() : child.tag == "list" ? listContent() : parameters();
    object.children.push_back(child);
  }

  std::string text() {
    return std::vector<std::string>{"", "1", "two", "a &amp; b", "longer than the others"}[pick(5)];
  }

  std::string parameters() {
    std::string content;
    for (unsigned i = pick(3); i > 0; --i) {
      content += "<p name='n" + std::to_string(i) + "'>" + text() + "</p>";
    }
    return content;
  }

  std::string listContent() {
    const bool hasItems = pick(2) == 0;
    std::string content;
    for (unsigned i = pick(4); i > 0; --i) {
      content += hasItems ? "<item>" + parameters() + "</item>" : "<p>" + text() + "</p>";
    }
    return content;
  }

  std::optional<std::vector<std::string>> logs(unsigned most) {
    if (pick(6) == 0) return std::nullopt;
    std::vector<std::string> result;
    for (unsigned count = pick(most); count > 0; --count) {
      result.push_back("<log action='a" + std::to_string(pick(100)) + "' dateTime='d'>" + text() +
                       "</log>");
    }
    return result;
  }

  std::mt19937 random_;
};

// The library beside the model

std::unique_ptr<LibTarnDocument> parsed(const Document& document) {
  auto result = std::make_unique<LibTarnDocument>();
  EXPECT_EQ(result->parse(document.render().c_str(), false), 0) << document.render();
  return result;
}

std::string dumpOf(const LibTarnDocument& document) {
  return tarn_test::dump(*document.getItsTarnDomDocument());
}

// The tree as the model has it, and the indexes in step with it.
void expectSame(const LibTarnDocument& document, Document& model) {
  ASSERT_EQ(dumpOf(document), dumpOf(*parsed(model)));
  const LibTarnCmData& cmData = *document.getLibTarnCmData();
  ASSERT_EQ(cmData.getManagedObjectNumber(), model.objects.size());
  std::vector<std::string> names;
  for (const LibTarnManagedObject* object : cmData.getLibTarnManagedObjects()) {
    const char* const name = object->getDistName().getText();
    names.push_back(name ? name : "");
  }
  ASSERT_TRUE(std::is_sorted(names.begin(), names.end()));
  for (const std::string& name : names) {
    const auto it = model.find(name);
    ASSERT_NE(it, model.objects.end());
    const auto* object = cmData.getLibTarnManagedObject(name.c_str());
    ASSERT_NE(object, nullptr);
    ASSERT_EQ(object->getOperation().toString(), it->operation.value_or("auto"));
    std::size_t parameters = 0;
    std::size_t lists = 0;
    for (const Child& child : it->children) {
      if (child.tag == "p") {
        ++parameters;
        ASSERT_NE(object->getScalarParameter(child.key().c_str()), nullptr);
      } else if (child.tag == "list") {
        ++lists;
        ASSERT_NE(object->getListParameter(child.key()), nullptr);
      }
    }
    ASSERT_EQ(
        std::distance(object->getScalarParameters().begin(), object->getScalarParameters().end()),
        static_cast<std::ptrdiff_t>(parameters));
    ASSERT_EQ(std::distance(object->getListParameters().begin(), object->getListParameters().end()),
              static_cast<std::ptrdiff_t>(lists));
  }
}

struct Counts {
  unsigned merged = 0;
  unsigned refused = 0;
};

// Merges deltas one after the other into one source.
void mergeDocuments(unsigned seed, unsigned conflictOdds, Counts& counts) {
  CapturedLog log;
  Generator generator(seed);
  Document sourceModel = generator.source();
  const auto source = parsed(sourceModel);
  TarnMerge tarnMerge(*source);
  for (int round = 0; round < 4; ++round) {
    Document deltaModel = generator.delta(sourceModel, conflictOdds);
    const std::string before = source->getItsTarnDomDocument()->printDocument();
    auto delta = std::make_unique<HeapDocument>(deltaModel.render());
    log.clear();
    const bool done = tarnMerge.mergeDocument(delta->get());
    ASSERT_EQ(done, merge(sourceModel, deltaModel)) << deltaModel.render();
    ASSERT_EQ(log.messages("ERROR").size(), done ? 0U : 1U);
    ASSERT_NO_FATAL_FAILURE(expectSame(delta->get(), deltaModel));
    delta.reset();
    ASSERT_NO_FATAL_FAILURE(expectSame(*source, sourceModel));
    if (!done) {
      ASSERT_EQ(source->getItsTarnDomDocument()->printDocument(), before);
    }
    ++(done ? counts.merged : counts.refused);
  }
}

TEST(RandomMergeTest, DocumentsMergeAsThePlainModelSays) {
  Counts counts;
  for (unsigned seed = 0; seed < 1500; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    ASSERT_NO_FATAL_FAILURE(mergeDocuments(seed, seed % 2 == 0 ? 1000 : 8, counts));
  }
  // The deltas are such that both outcomes are tried.
  EXPECT_GT(counts.merged, 2000U);
  EXPECT_GT(counts.refused, 500U);
}

TEST(RandomMergeTest, SingleObjectsMergeAsThePlainModelSays) {
  for (unsigned seed = 0; seed < 1500; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    CapturedLog log;
    Generator generator(seed);
    Document sourceModel = generator.source();
    const auto source = parsed(sourceModel);
    Document deltaModel = generator.delta(sourceModel, 3);
    auto delta = std::make_unique<HeapDocument>(deltaModel.render());
    log.clear();
    TarnMerge tarnMerge(*source);
    for (const Object& object : deltaModel.objects) {
      const bool isThere = sourceModel.find(object.key()) != sourceModel.objects.end();
      const bool fits = !conflicts(object, isThere);
      LibTarnManagedObject* const element =
          delta->get().getLibTarnCmData()->getLibTarnManagedObject(object.key().c_str());
      ASSERT_EQ(tarnMerge.mergeManagedObject(*element), fits);
      if (fits) apply(sourceModel, object);
    }
    ASSERT_TRUE(log.lines().empty());
    ASSERT_NO_FATAL_FAILURE(expectSame(delta->get(), deltaModel));
    delta.reset();
    ASSERT_NO_FATAL_FAILURE(expectSame(*source, sourceModel));
  }
}

}  // namespace
