// Merges and changes by mask are made completely or not at all, whatever ends them: a copy that
// breaks a rule of the model, or memory that runs out at any allocation.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"
#include "support/CapturedLog.hpp"
#include "support/HeapCount.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::TarnMerge;
using tarn_test::brokenDocument;
using tarn_test::CapturedLog;
using tarn_test::documentTextWithLog;
using tarn_test::HeapFault;
using tarn_test::objectText;

constexpr auto BLOCK = static_cast<unsigned>(rapidxml::memory_pool<char>::dynamic_pool_size);

// Pool blocks from the heap, so that a test can let them run out.
class Document {
 public:
  explicit Document(const std::string& text) {
    EXPECT_EQ(document_.parse(text.c_str(), false), 0) << text;
  }
  LibTarnDocument& get() { return document_; }
  LibTarnCmData& cmData() { return *document_.getLibTarnCmData(); }
  LibTarnManagedObject& object(const char* name) { return *cmData().getLibTarnManagedObject(name); }

  // Leaves that number of bytes in the block of the pool.
  void leave(unsigned bytes) { document_.getItsTarnDomDocument()->allocateMemory(BLOCK - bytes); }

 private:
  LibTarnDocument document_{new TarnDomDocument(nullptr, nullptr)};
};

// Everything that a host can see: the text, and the entries of the indexes in their order.
std::string stateOf(LibTarnDocument& document) {
  std::string state;
  libtarn::util::dumpTarnDocument(document, state);
  const LibTarnCmData& cmData = *document.getLibTarnCmData();
  for (const LibTarnManagedObject* object : cmData.getLibTarnManagedObjects()) {
    state += std::string(object->getDistName().getText()) + " " +
             object->getOperation().toString() + ":";
    for (const auto& entry : object->getScalarParameters()) {
      state += std::string(" ") + entry.first + "=" + entry.second->getValue();
    }
    for (const auto& entry : object->getListParameters()) state += std::string(" ") + entry.first;
    state += "\n";
  }
  for (const char* const className : {"C", "D", "E"}) {
    for (const LibTarnManagedObject* object : cmData.getLibTarnManagedObjectsByClass(className)) {
      state += object->getDistName().getText() + std::string(" ");
    }
    state += "\n";
  }
  return state;
}

// Parameters that an update replaces, and some that it leaves, in another order than their names.
std::string body() {
  std::string text =
      "<list name='l'><p>1</p></list><p name='z'>old</p><extension name='e'><p name='n'>v</p>"
      "</extension><p name='a'>old</p><extension name='f'/><extension name='e'/>"
      "<list name='m'><item><p name='x'>1</p></item></list>";
  // More parameters than an array of the index holds.
  for (int i = 0; i < 70; ++i) text += "<list name='k" + std::to_string(i) + "'/>";
  return text;
}

std::string sourceText() {
  return documentTextWithLog(objectText("A-3", "", body()) + objectText("A-1", "", body()) +
                             objectText("A-2", "", body()) +
                             objectText("A-5", "", "<p name='a'>old</p>"));
}

// Every kind of change, and at the end what is given.
std::string deltaText(const std::string& last) {
  const std::string changes =
      "<p name='a'>a value longer than before</p><p name='b'>new</p><list name='m'/>"
      "<list name='l'><p>2</p></list><list name='o'/><list name='k3'><p>9</p></list>"
      "<extension name='e'><p name='w'>v</p></extension><extension name='g'/>";
  return documentTextWithLog(objectText("A-1", "update", changes) +
                             objectText("A-2", "delete", "") + objectText("A-3", "auto", changes) +
                             objectText("A-4", "", changes) + objectText("B-1", "create", changes) +
                             last);
}

// Documents that are valid, and whose copies break a rule.
const char* const BROKEN_COPIES[] = {
    "<managedObject operation='x'/>",
    "<managedObject distName='D'><p name='n'/><p name='n'/></managedObject>",
    "<item><p name='n'/><p name='n'/></item>",
    "<list name='q'><item><item><p/><p/></item></item></list>",
    "<extension name='q'><list name='l'><item><p/><p/></item></list></extension>",
};

TEST(AtomicEditTest, MergeThatBreaksARuleHasChangedNothing) {
  for (const char* const broken : BROKEN_COPIES) {
    for (const char* const operation : {"create", "auto", ""}) {
      SCOPED_TRACE(std::string(broken) + operation);
      Document source(sourceText());
      Document delta(deltaText(objectText("Z-1", operation, broken)));
      const std::string sourceBefore = stateOf(source.get());
      const std::string deltaBefore = stateOf(delta.get());
      EXPECT_THROW(TarnMerge(source.get()).mergeDocument(delta.get()), exceptions::ModelException);
      EXPECT_EQ(stateOf(source.get()), sourceBefore);
      EXPECT_EQ(stateOf(delta.get()), deltaBefore);
      EXPECT_EQ(brokenDocument(source.get()), "");
      EXPECT_EQ(brokenDocument(delta.get()), "");
    }
  }
}

// A host can change the attribute without the object, which then keeps the value that it had read.
TEST(AtomicEditTest, OperationThatWasNotReadIsNotReadWhenAMergeIsTakenBack) {
  Document source(documentTextWithLog(objectText("A-1", "", "")));
  Document delta(documentTextWithLog(objectText("A-1", "", "") +
                                     objectText("Z-1", "create", BROKEN_COPIES[0])));
  auto& written = dynamic_cast<LibTarnManagedObjectImp&>(delta.object("A-1"));
  written.setAttribute("operation", "delete");
  EXPECT_THROW(TarnMerge(source.get()).mergeDocument(delta.get()), exceptions::ModelException);
  EXPECT_TRUE(written.getOperation() == LibTarnManagedObject::Operation::AUTO);
  EXPECT_STREQ(written.getAttribute("operation"), "delete");
}

TEST(AtomicEditTest, UpdateThatBreaksARuleHasChangedNothing) {
  // A list and an extension that cannot be copied, after others that can.
  for (const char* const broken : {BROKEN_COPIES[3], BROKEN_COPIES[4]}) {
    SCOPED_TRACE(broken);
    const std::string changes = objectText(
        "A-1", "update",
        "<p name='a'>new</p><list name='l'/><extension name='e'/>" + std::string(broken));
    Document source(sourceText());
    Document delta(documentTextWithLog(changes));
    const std::string before = stateOf(source.get());
    TarnMerge merge(source.get());
    LibTarnManagedObject& to = source.object("A-1");
    LibTarnManagedObject& from = delta.object("A-1");
    EXPECT_THROW(merge.mergeManagedObject(from), exceptions::ModelException);
    EXPECT_EQ(stateOf(source.get()), before);
    EXPECT_THROW(merge.doOperationUpdate(&to, &from), exceptions::ModelException);
    EXPECT_EQ(stateOf(source.get()), before);
    const bool isList = broken == BROKEN_COPIES[3];
    EXPECT_THROW(isList ? merge.updateLists(&to, &from) : merge.updateExtensions(&to, &from),
                 exceptions::ModelException);
    EXPECT_EQ(stateOf(source.get()), before);
    EXPECT_EQ(brokenDocument(source.get()), "");
  }
}

TEST(AtomicEditTest, ChangeThatBreaksARuleHasChangedNothing) {
  Document source(sourceText());
  auto& factory = source.get().getFactory();
  Document holder(
      documentTextWithLog("<managedObject class='D' distName='B-1' version='2' operation='delete'>"
                          "<p name='a'>new</p><list name='l'/>" +
                          std::string(BROKEN_COPIES[3]) + "</managedObject>"));
  LibTarnManagedObject& values = holder.object("B-1");
  LibTarnManagedObject& mask = *factory.createLibTarnManagedObject("#", "A-1", "#");
  const std::string before = stateOf(source.get());
  EXPECT_THROW(source.object("A-1").change(mask, values), exceptions::ModelException);
  EXPECT_EQ(stateOf(source.get()), before);
  EXPECT_EQ(brokenDocument(source.get()), "");
}

// An operation on two documents.
struct Work {
  const char* name;
  std::function<void(Document& source, Document& delta)> act;
};

void changeByMask(Document& source, Document& delta, const char* mask) {
  auto& factory = delta.get().getFactory();
  LibTarnManagedObject& pattern = *factory.createLibTarnManagedObject("#", mask, "#");
  LibTarnManagedObject& values = *factory.createLibTarnManagedObject("D", "NETWORK-77", "2");
  values.setOperation(LibTarnManagedObject::Operation::CREATE);
  for (const char* const name : {"a", "b", "c"}) {
    values.addParameter(*factory.createScalar(name, "a value longer than before"));
  }
  for (const char* const name : {"k3", "l", "o"}) values.addParameter(*factory.createList(name));
  source.object(mask).change(pattern, values);
}

const std::vector<Work>& works() {
  static const std::vector<Work> all = {
      {"merge",
       [](Document& source, Document& delta) {
         EXPECT_TRUE(TarnMerge(source.get()).mergeDocument(delta.get()));
       }},
      {"merge of an object",
       [](Document& source, Document& delta) {
         EXPECT_TRUE(TarnMerge(source.get()).mergeManagedObject(delta.object("A-1")));
       }},
      {"a further object",
       [](Document& source, Document& delta) {
         EXPECT_TRUE(TarnMerge(source.get()).mergeManagedObject(delta.object("B-1")));
       }},
      {"scalars",
       [](Document& source, Document& delta) {
         TarnMerge(source.get()).updateScalars(&source.object("A-1"), &delta.object("A-1"));
       }},
      {"lists",
       [](Document& source, Document& delta) {
         TarnMerge(source.get()).updateLists(&source.object("A-1"), &delta.object("A-1"));
       }},
      {"extensions",
       [](Document& source, Document& delta) {
         TarnMerge(source.get()).updateExtensions(&source.object("A-1"), &delta.object("A-1"));
       }},
      {"headers",
       [](Document& source, Document& delta) {
         TarnMerge merge(source.get());
         merge.addHeaders(merge.getCmData(delta.get()));
       }},
      {"change", [](Document& source, Document& delta) { changeByMask(source, delta, "A-1"); }},
      {"rename",
       [](Document& source, Document&) { source.object("A-1").setDistName("NETWORK-1/SITE-2"); }},
      {"rename to a name that is taken",
       [](Document& source, Document&) { source.object("A-1").setDistName("A-2"); }},
  };
  return all;
}

// A planned failure: of the allocations of at least `leastSize` bytes, the `number`-th and all
// after it fail, with that number of bytes left in the block of the source's pool.
struct Fault {
  std::size_t number;
  std::size_t leastSize;
  unsigned left;
  bool withViews;  // the indexes have built their views
};

struct Outcome {
  bool failed;    // the work threw std::bad_alloc
  bool happened;  // the work reached the allocation
};

// When the operation fails, nothing may have changed, and a second try succeeds.
Outcome actWith(const Work& work, const Fault& fault) {
  CapturedLog log;
  Document source(sourceText());
  Document delta(deltaText(""));
  Document sourceBefore(sourceText());
  Document deltaBefore(deltaText(""));
  if (fault.withViews) stateOf(source.get());
  if (fault.left > 0) source.leave(fault.left);
  Outcome outcome{false, false};
  {
    const HeapFault heapFault(fault.number, fault.leastSize, HeapFault::Lasts::FROM_THEN_ON);
    try {
      work.act(source, delta);
    } catch (const std::bad_alloc&) {
      outcome.failed = true;
    }
    outcome.happened = heapFault.happened();
  }
  if (outcome.failed) {
    EXPECT_EQ(stateOf(source.get()), stateOf(sourceBefore.get()));
    EXPECT_EQ(stateOf(delta.get()), stateOf(deltaBefore.get()));
    EXPECT_EQ(brokenDocument(source.get()), "");
    EXPECT_EQ(brokenDocument(delta.get()), "");
    work.act(source, delta);
  }
  work.act(sourceBefore, deltaBefore);
  EXPECT_EQ(stateOf(source.get()), stateOf(sourceBefore.get()));
  EXPECT_EQ(stateOf(delta.get()), stateOf(deltaBefore.get()));
  return outcome;
}

TEST(AtomicEditTest, PoolThatEndsAnywhereLeavesEverythingAsItWas) {
  int allFailed = 0;
  for (const Work& work : works()) {
    SCOPED_TRACE(work.name);
    int failed = 0;
    // From nearly nothing left to enough for everything.
    for (unsigned left = 8; left < 40000 && !HasFailure(); left += left < 3000 ? 16 : 56) {
      SCOPED_TRACE(left);
      // Only the blocks of the pool are so large.
      const Outcome outcome = actWith(work, {1, BLOCK, left, left % 16 == 0});
      failed += outcome.failed ? 1 : 0;
      if (!outcome.happened && left > 3000) break;
    }
    allFailed += failed;
  }
  EXPECT_GT(allFailed, 100);
}

TEST(AtomicEditTest, HeapThatEndsAnywhereLeavesEverythingAsItWas) {
  for (const Work& work : works()) {
    SCOPED_TRACE(work.name);
    bool happened = true;
    for (std::size_t number = 1; happened && !HasFailure(); ++number) {
      ASSERT_LT(number, 10000U);
      SCOPED_TRACE(number);
      happened = actWith(work, {number, 0, 0, number % 2 == 0}).happened;
    }
  }
}

// `numbered("A-", 100, 110, ...)` are the objects A-100 to A-109.
std::string numbered(const std::string& name, int from, int to, const std::string& operation) {
  std::string objects;
  for (int i = from; i < to; ++i) objects += objectText(name + std::to_string(i), operation, "");
  return objects;
}

bool mergeFails(Document& source, Document& delta) {
  const HeapFault fault(1, BLOCK, HeapFault::Lasts::FROM_THEN_ON);
  try {
    EXPECT_TRUE(TarnMerge(source.get()).mergeDocument(delta.get()));
    return false;
  } catch (const std::bad_alloc&) {
    return true;
  }
}

// When an object is removed, the index may have to add another one that took its name.
TEST(AtomicEditTest, MergeIsTakenBackWithoutMemoryBesideAnObjectThatLostItsName) {
  int failed = 0;
  for (unsigned left = 8; left < 30000 && !HasFailure(); left += 400) {
    SCOPED_TRACE(left);
    const CapturedLog log;
    Document source(documentTextWithLog(numbered("A-", 100, 156, "") + objectText("B-1", "", "")));
    Document delta(documentTextWithLog(numbered("N-", 100, 160, "create")));
    stateOf(source.get());
    source.object("B-1").setDistName("A-100");
    const std::string before = stateOf(source.get());
    source.leave(left);
    if (!mergeFails(source, delta)) continue;
    ++failed;
    EXPECT_EQ(stateOf(source.get()), before);
  }
  EXPECT_GT(failed, 0);
}

// When one object is removed, another one gets its name back, which splits a full leaf of its
// class. When the next one is removed, the pool has no memory left.
TEST(AtomicEditTest, ObjectsAreDeletedWithoutMemory) {
  int deleted = 0;
  for (unsigned left = 8; left < 8000 && !HasFailure(); left += 8) {
    SCOPED_TRACE(left);
    const CapturedLog log;
    Document source(documentTextWithLog(numbered("C-", 100, 180, "") +
                                        "<managedObject class='Z' distName='A-0'/>"
                                        "<managedObject class='Z' distName='A-1'/>"
                                        "<managedObject class='Z' distName='A-2'/>"
                                        "<managedObject class='B' distName='B-1'/>"));
    Document delta(documentTextWithLog(
        objectText("A-0", "delete", "") + objectText("A-1", "delete", "") +
        objectText("A-2", "delete", "") + objectText("C-100", "update", "<p name='a'>1</p>")));
    stateOf(source.get());
    source.object("B-1").setDistName("A-1");
    auto& factory = source.get().getFactory();
    for (int i = 0; i < 70; ++i) {
      const std::string name = "B-" + std::to_string(i);
      source.cmData().addLibTarnManagedObject(
          *factory.createLibTarnManagedObject("B", name.c_str(), nullptr));
    }
    const std::string before = stateOf(source.get());
    source.leave(left);
    if (mergeFails(source, delta)) {
      EXPECT_EQ(stateOf(source.get()), before);
    } else {
      EXPECT_FALSE(source.cmData().hasLibTarnManagedObject("A-2"));
      ++deleted;
    }
  }
  EXPECT_GT(deleted, 0);
}

// Returns a number less than `limit`.
unsigned anyBelow(unsigned limit, std::mt19937& random) {
  return static_cast<unsigned>(random() % limit);
}

std::string operationFor(bool isThere, std::mt19937& random) {
  if (!isThere) return "create";
  return anyBelow(2, random) == 0 ? "delete" : "update";
}

// Renames, removals, changes and merges among so few names that objects take them from one another.
TEST(AtomicEditTest, EditsAmongFewNamesChangeNothingWhenMemoryEnds) {
  int failed = 0;
  for (unsigned seed = 0; seed < 100 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    const CapturedLog log;
    std::mt19937 random(seed);
    const unsigned names = 5 + anyBelow(90, random);
    const auto anyName = [&] { return "A-" + std::to_string(100 + anyBelow(names, random)); };
    Document source(documentTextWithLog(numbered("A-", 100, 100 + static_cast<int>(names), "")));
    auto& factory = source.get().getFactory();
    for (int step = 0; step < 40 && !HasFailure(); ++step) {
      const std::string name = anyName();
      LibTarnManagedObject* const edited =
          source.cmData().getLibTarnManagedObject(anyName().c_str());
      LibTarnManagedObject& mask = *factory.createLibTarnManagedObject("#", "A-1", "#");
      LibTarnManagedObject& values = *factory.createLibTarnManagedObject("D", name.c_str(), "2");
      values.addParameter(*factory.createScalar("a", "1"));
      std::string changes;
      for (unsigned number = anyBelow(7, random); number < names;
           number += 1 + anyBelow(30, random)) {
        const std::string each = "A-" + std::to_string(100 + number);
        const bool isThere = source.cmData().hasLibTarnManagedObject(each.c_str());
        changes += objectText(each, operationFor(isThere, random), "<p name='b'>1</p>");
      }
      Document delta(documentTextWithLog(changes));
      const std::string before = stateOf(source.get());
      source.leave(8 + 8 * anyBelow(900, random));
      const HeapFault fault(1, BLOCK, HeapFault::Lasts::FROM_THEN_ON);
      try {
        const unsigned kind = anyBelow(4, random);
        if (kind == 0 && edited) edited->setDistName(name.c_str());
        if (kind == 1 && edited) edited->change(mask, values);
        if (kind == 2) source.cmData().removeLibTarnManagedObject(name.c_str());
        if (kind == 3) TarnMerge(source.get()).mergeDocument(delta.get());
      } catch (const std::bad_alloc&) {
        ++failed;
        EXPECT_EQ(stateOf(source.get()), before) << step;
      }
    }
  }
  EXPECT_GT(failed, 100);
}

// One after the other: objects before the one that fails stay changed.
TEST(AtomicEditTest, EachObjectIsChangedByAMaskWhollyOrNotAtAll) {
  int partly = 0;
  for (unsigned left = 0; left < 12000 && !HasFailure(); left += 24) {
    SCOPED_TRACE(left);
    CapturedLog log;
    Document source(sourceText());
    Document expected(sourceText());
    auto& factory = source.get().getFactory();
    LibTarnManagedObject& mask = *factory.createLibTarnManagedObject("C", "A-", "#");
    LibTarnManagedObject& values = *factory.createLibTarnManagedObject("D", "NETWORK-9/A-", "2");
    values.addParameter(*factory.createScalar("a", "a value longer than before"));
    values.addParameter(*factory.createScalar("b", "new"));
    values.addParameter(*factory.createList("l"));
    values.addParameter(*factory.createList("o"));
    expected.get().setChangesToMOs(mask, values);
    const auto textOf = [](const LibTarnManagedObject& object) {
      const auto& element = dynamic_cast<const LibTarnManagedObjectImp&>(object);
      std::string text;
      rapidxml::print_node(text, &element, 0, 0);
      return text;
    };
    std::set<std::string> whole;
    for (Document* const each : {&source, &expected}) {
      for (const auto* object : each->cmData().getLibTarnManagedObjects()) {
        whole.insert(textOf(*object));
      }
    }
    source.leave(left);
    bool failed = false;
    {
      HeapFault fault(1, BLOCK, HeapFault::Lasts::FROM_THEN_ON);
      try {
        source.get().setChangesToMOs(mask, values);
      } catch (const std::bad_alloc&) {
        failed = true;
      }
    }
    EXPECT_EQ(brokenDocument(source.get()), "");
    int changed = 0;
    for (const auto* object : source.cmData().getLibTarnManagedObjects()) {
      EXPECT_EQ(whole.count(textOf(*object)), 1U);
      changed += std::string(object->getClass()) == "D" ? 1 : 0;
    }
    partly += failed && changed > 0 ? 1 : 0;
  }
  EXPECT_GT(partly, 0);
}

}  // namespace
