// Memory that runs out: every allocation of an operation fails once. Each time nothing is lost, the
// documents are consistent, and they can be destroyed.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "support/CapturedLog.hpp"
#include "support/HeapCount.hpp"
#include "support/MapFault.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::TarnDiff;
using libtarn::editor::TarnMerge;
using libtarn::editor::TarnPlan;
using tarn_test::brokenDocument;
using tarn_test::documentTextWithLog;
using tarn_test::HeapFault;
using tarn_test::Indexes;
using tarn_test::MapFault;
using Operation = LibTarnManagedObject::Operation;

constexpr int OBJECTS = 400;  // more than a block of the pool holds
constexpr int FEW = 20;

std::string object(int number, const std::string& attributes = "") {
  const std::string text = std::to_string(number);
  return "<managedObject class='C" + std::to_string(number % 3) + "' distName='A-" + text + "' " +
         attributes + "><p name='a'>" + text + "</p><p name='b'/><list name='l'><p>1</p></list>" +
         "<list name='m'><item><p name='x'>1</p></item></list>" +
         "<extension name='e'><p name='n'>v</p></extension></managedObject>";
}

std::string documentText(int from, int to, const std::string& attributes = "") {
  std::string text;
  // Not in order, so that indexes sort.
  for (int number = from; number < to; ++number) text += object(number * 7919 % 100003, attributes);
  return documentTextWithLog(text);
}

// Where the pool's blocks come from.
enum class Blocks { HEAP, MAPS, MAPS_THAT_THROW };

class Side {
 public:
  explicit Side(Blocks blocks) {
    if (blocks == Blocks::MAPS) {
      document_.emplace();
    } else if (blocks == Blocks::MAPS_THAT_THROW) {
      document_.emplace(OutOfMemory::Throw);
    } else {
      document_.emplace(new TarnDomDocument(nullptr, nullptr));
    }
  }

  LibTarnDocument& get() { return *document_; }

 private:
  std::optional<LibTarnDocument> document_;
};

std::unique_ptr<Side> loaded(Blocks blocks, const std::string& text) {
  auto side = std::make_unique<Side>(blocks);
  EXPECT_EQ(side->get().parse(text.c_str(), false), 0);
  return side;
}

// Two documents, and the operations on them.
struct Documents {
  std::string sourceText = documentText(0, OBJECTS);
  std::unique_ptr<Side> source;
  std::unique_ptr<Side> delta;
};

using Step = std::function<void(Documents&)>;

struct Work {
  const char* name;
  Step prepare;
  Step act;
};

Work load(Blocks blocks) {
  return {"load", [](Documents&) {},
          [blocks](Documents& documents) {
            documents.source = std::make_unique<Side>(blocks);
            documents.source->get().parse(documents.sourceText.c_str(), true);
          }};
}

Work loadAgain(Blocks blocks) {
  return {
      "load again",
      [blocks](Documents& documents) { documents.source = loaded(blocks, documentText(0, 10)); },
      [](Documents& documents) {
        documents.source->get().parse(documents.sourceText.c_str(), false);
      }};
}

void editAll(LibTarnDocument& document) {
  auto& factory = document.getFactory();
  LibTarnCmData& cmData = *document.getLibTarnCmData();
  for (int i = 0; i < 400; ++i) {
    const std::string name = std::to_string(i);
    LibTarnManagedObject* const made = factory.createLibTarnManagedObject(
        "C", ("B-" + name).c_str(), Operation::CREATE, name.c_str());
    cmData.addLibTarnManagedObject(*made);
    made->addParameter(*factory.createScalar("a", "1"));
    List* const list = factory.createList("l");
    Structure* const item = factory.createStructure();
    item->addComponent(*factory.createScalar("c", name.c_str()));
    list->addValue(*item);
    made->addParameter(*list);
    LibTarnExtension* const extension = factory.createLibTarnExtension("e");
    extension->addParameter(*factory.createScalar("n", "v"));
    made->addParameter(*extension);
    made->setDistName(("D-" + name).c_str());
    made->getScalarParameter("a")->setValue("a longer value than before");
    made->setVersion("2");
    if (i % 3 == 0) cmData.removeLibTarnManagedObject(("D-" + name).c_str());
  }
  cmData.getLibTarnHeader()->addLog(*factory.createLog("edit", "app", "value"));
}

// Logs a line for each object, with many allocations.
void changeByMask(LibTarnDocument& document) {
  LibTarnManagedObject& mask = libtarn::util::ManagedObjectBuilder(document).setClass("C1").get();
  LibTarnManagedObject& values = libtarn::util::ManagedObjectBuilder(document)
                                     .setClass("C7")
                                     .setDistName("D-1")
                                     .setVersion("3")
                                     .get();
  values.addParameter(*document.getFactory().createScalar("a", "changed"));
  values.addParameter(*document.getFactory().createList("l"));
  document.setChangesToMOs(mask, values);
}

Work edit(Blocks blocks) {
  return {
      "edit",
      [blocks](Documents& documents) { documents.source = loaded(blocks, documents.sourceText); },
      [](Documents& documents) { editAll(documents.source->get()); }};
}

Work change(Blocks blocks) {
  return {"change",
          [blocks](Documents& documents) {
            documents.source = loaded(blocks, documentText(0, FEW));
            documents.source->get().getItsTarnDomDocument()->allocateMemory(200 << 10);
          },
          [](Documents& documents) { changeByMask(documents.source->get()); }};
}

Work clone(Blocks blocks) {
  return {"clone",
          [blocks](Documents& documents) {
            documents.source = loaded(blocks, documents.sourceText);
            documents.delta = loaded(blocks, documentText(0, 0));
          },
          [](Documents& documents) {
            auto& factory = documents.delta->get().getFactory();
            LibTarnCmData& target = *documents.delta->get().getLibTarnCmData();
            for (const auto* each :
                 documents.source->get().getLibTarnCmData()->getLibTarnManagedObjects()) {
              target.addLibTarnManagedObject(
                  dynamic_cast<LibTarnManagedObject&>(*each->clone(factory)));
            }
          }};
}

Work merge(Blocks blocks) {
  return {"merge",
          [blocks](Documents& documents) {
            documents.source = loaded(blocks, documents.sourceText);
            documents.delta = loaded(blocks, documentText(OBJECTS / 2, 2 * OBJECTS));
          },
          [](Documents& documents) {
            TarnMerge(documents.source->get()).mergeDocument(documents.delta->get());
          }};
}

Work compareAndPlan(Blocks blocks) {
  return {"compare and plan",
          [blocks](Documents& documents) {
            documents.source = loaded(blocks, documents.sourceText);
            documents.delta = loaded(blocks, documentText(OBJECTS / 2, 2 * OBJECTS));
          },
          [](Documents& documents) {
            TarnDiff(documents.source->get(), documents.delta->get());
            TarnPlan(documents.source->get(), documents.delta->get()).apply();
          }};
}

Work print(Blocks blocks) {
  return {
      "print",
      [blocks](Documents& documents) { documents.source = loaded(blocks, documents.sourceText); },
      [](Documents& documents) {
        std::string printed;
        libtarn::util::dumpTarnDocument(documents.source->get(), printed);
      }};
}

std::vector<Work> allWorks(Blocks blocks) {
  return {load(blocks),  loadAgain(blocks), edit(blocks),           change(blocks),
          clone(blocks), merge(blocks),     compareAndPlan(blocks), print(blocks)};
}

// Empty when nothing is broken.
std::string broken(const Documents& documents, bool done) {
  for (Side* const side : {documents.source.get(), documents.delta.get()}) {
    if (!side) continue;
    LibTarnDocument* const document = &side->get();
    // The indexes of a load that failed are not complete.
    const bool whole = done || document->getLibTarnCmData() == nullptr;
    const std::string finding =
        brokenDocument(*document, whole ? Indexes::IN_STEP : Indexes::SOUND);
    if (!finding.empty()) return finding;
  }
  return "";
}

TEST(MemoryFaultTest, EveryAllocationOnTheHeapMayFail) {
  for (const Work& work : allWorks(Blocks::HEAP)) {
    SCOPED_TRACE(work.name);
    {
      // Made once and kept.
      Documents documents;
      work.prepare(documents);
      work.act(documents);
    }
    std::size_t faults = 0;
    for (bool done = false; !done; ++faults) {
      ASSERT_LT(faults, 100000U);
      tarn_test::CapturedLog log;
      const std::size_t before = tarn_test::heapBlocks();
      {
        Documents documents;
        work.prepare(documents);
        {
          HeapFault fault(faults + 1);
          try {
            work.act(documents);
          } catch (const std::bad_alloc&) {
          }
          done = !fault.happened();
        }
        log.clear();
        const bool loading = std::string(work.name).find("load") == 0;
        ASSERT_EQ(broken(documents, done || !loading), "") << "fault " << faults + 1;
      }
      log.clear();
      ASSERT_EQ(tarn_test::heapBlocks(), before) << "fault " << faults + 1;
    }
    // Otherwise the test has tried nothing.
    EXPECT_GT(faults, 2U);
    RecordProperty(work.name, std::to_string(faults - 1));
  }
}

TEST(MemoryFaultTest, ADocumentThatDidNotFitLoadsOnceThereIsMemory) {
  for (std::size_t number = 1; number < 40; ++number) {
    tarn_test::CapturedLog log;
    Side side(Blocks::HEAP);
    LibTarnDocument* const document = &side.get();
    const std::string text = documentText(0, OBJECTS);
    {
      HeapFault fault(number);
      try {
        document->parse(text.c_str(), true);
      } catch (const std::bad_alloc&) {
      }
    }
    ASSERT_EQ(document->parse(text.c_str(), true), 0);
    ASSERT_EQ(brokenDocument(*document), "");
    ASSERT_EQ(document->getItsTarnDomDocument()->printDocument(),
              loaded(Blocks::HEAP, text)->get().getItsTarnDomDocument()->printDocument());
  }
}

// The next parse frees the text of the one before, also after a parse that ran out of memory.
TEST(MemoryFaultTest, RootAndDeclarationHaveTheirTextsWhenThereWasNoRoomToMoveThem) {
  constexpr std::size_t LONG = std::size_t{1} << 20U;
  const std::string value(LONG, 'x');
  const auto vectorOf = [](const std::string& text) {
    return std::vector<char>(text.c_str(), text.c_str() + text.size() + 1);
  };
  for (const std::string& text :
       {"<?xml a='" + value + "'?><tarn/>", "<tarn a='" + value + "'/>"}) {
    LibTarnDocument document(new TarnDomDocument(nullptr, nullptr));
    TarnDomDocument& dom = *document.getItsTarnDomDocument();
    {
      std::vector<char> first = vectorOf(text);
      dom.parse(first);
    }
    std::vector<char> next = vectorOf("<p/>");
    {
      HeapFault fault(1, LONG);
      EXPECT_THROW(dom.parse(next), std::bad_alloc);
    }
    dom.parse(next);
    next.assign(next.capacity(), 'y');
    const libDomXml::IDomElement* const root = dom.getRootElement();
    const char* const found = root->getAttribute("a");
    EXPECT_EQ(found ? found : dom.getDocumentDeclaration()->getAttribute("a"), value);
  }
}

// The number of bytes left in the pool varies, so that memory runs out at every point of an
// operation.
TEST(MemoryFaultTest, PoolMayEndWithinEveryOperation) {
  struct Operations {
    const char* name;
    std::function<void(LibTarnDocument&, LibTarnManagedObject&, LibTarnDocument& delta)> act;
  };
  // Longer than the bytes that alignment may leave of a block.
  constexpr const char* LONG_NAME = "NETWORK-1/SITE-222/RADIO-3333/CELL-44444";
  const std::string source = documentText(0, FEW);
  const Operations all[] = {
      {"create",
       [](LibTarnDocument& document, LibTarnManagedObject&, LibTarnDocument&) {
         document.getLibTarnCmData()->addLibTarnManagedObject(
             *document.getFactory().createLibTarnManagedObject("C", "B-1", Operation::UPDATE, "1"));
       }},
      {"rename", [](LibTarnDocument&, LibTarnManagedObject& object,
                    LibTarnDocument&) { object.setDistName(LONG_NAME); }},
      {"class and values",
       [](LibTarnDocument& document, LibTarnManagedObject& object, LibTarnDocument&) {
         auto& factory = document.getFactory();
         auto& mask = *factory.createLibTarnManagedObject("#", "A-0", nullptr);
         auto& values = *factory.createLibTarnManagedObject("D", "B-1", "2");
         values.addParameter(*factory.createScalar("a", "1"));
         values.addParameter(*factory.createList("l"));
         object.change(mask, values);
       }},
      {"parameters",
       [](LibTarnDocument& document, LibTarnManagedObject& object, LibTarnDocument&) {
         auto& factory = document.getFactory();
         for (const char* const name : {"c", "d", "e", "f"}) {
           object.addParameter(*factory.createScalar(name, "1"));
           object.addParameter(*factory.createList(name));
         }
         object.addParameter(*factory.createLibTarnExtension("x"));
         object.getScalarParameter("a")->setValue("other");
         object.setOperation(Operation::DELETE);
         object.setVersion("7");
       }},
      {"log",
       [](LibTarnDocument& document, LibTarnManagedObject&, LibTarnDocument&) {
         document.getLibTarnCmData()->getLibTarnHeader()->addLog(
             *document.getFactory().createLog("a", "b", "c"));
       }},
      {"copy", [](LibTarnDocument& document, LibTarnManagedObject& object,
                  LibTarnDocument&) { object.clone(document.getFactory()); }},
      {"merge", [](LibTarnDocument& document, LibTarnManagedObject&,
                   LibTarnDocument& delta) { TarnMerge(document).mergeDocument(delta); }},
      // One delta deletes what the next one creates. The third has to undo both.
      {"plan",
       [](LibTarnDocument& document, LibTarnManagedObject&, LibTarnDocument& delta) {
         const auto text = [](const char* operation) {
           return tarn_test::documentText(
               tarn_test::objectText("A-0", operation, "<p name='b'>2</p>") +
               tarn_test::objectText("A-7919", operation));
         };
         LibTarnDocument removal;
         removal.parse(text("delete").c_str(), false);
         LibTarnDocument creation;
         creation.parse(text("create").c_str(), false);
         const std::string before = tarn_test::printed(document);
         try {
           TarnPlan plan(document, {&removal, &creation, &delta});
           EXPECT_TRUE(plan.getConflicts().empty());
           EXPECT_TRUE(plan.apply());
         } catch (const std::bad_alloc&) {
           EXPECT_EQ(tarn_test::printed(document), before);
           throw;
         }
       }},
      {"views", [](LibTarnDocument& document, LibTarnManagedObject&, LibTarnDocument&) {
         document.getLibTarnCmData()->getLibTarnManagedObjectsByClass("C1");
         document.getLibTarnCmData()->getLibTarnManagedObjects();
       }}};
  for (const Operations& each : all) {
    SCOPED_TRACE(each.name);
    std::size_t faults = 0;
    for (unsigned left = 0; left < 8192; left += left < 1024 ? 8 : 64) {
      tarn_test::CapturedLog log;
      const auto side = loaded(Blocks::HEAP, source);
      LibTarnDocument& document = side->get();
      LibTarnManagedObject* const object =
          document.getLibTarnCmData()->getLibTarnManagedObject("A-0");
      LibTarnDocument delta;
      ASSERT_EQ(delta.parse(documentText(0, 3).c_str(), false), 0);
      constexpr auto BLOCK = static_cast<unsigned>(rapidxml::memory_pool<char>::dynamic_pool_size);
      document.getItsTarnDomDocument()->allocateMemory(BLOCK - left);
      bool failed = false;
      {
        // Only the blocks of the pool are so large.
        HeapFault fault(1, BLOCK);
        try {
          each.act(document, *object, delta);
        } catch (const std::bad_alloc&) {
          failed = true;
        }
      }
      faults += failed ? 1 : 0;
      ASSERT_EQ(brokenDocument(document), "") << left;
      // A second try succeeds.
      if (failed) each.act(document, *object, delta);
      ASSERT_EQ(brokenDocument(document), "") << left;
    }
    EXPECT_GT(faults, 0U);
  }
}

// An object that gets another name or class moves to another position in the indexes, where there
// may be no room.
TEST(MemoryFaultTest, ObjectKeepsNameAndClassWhenThereIsNoRoomForTheNewOnes) {
  std::string text = "<tarn><cmData type='plan'>";
  for (int i = 100; i < 500; ++i) {
    const std::string number = std::to_string(i);
    text += "<managedObject distName='A-" + number + "' class='C" + number + "'/>";
  }
  text += "<managedObject distName='B-1'/></cmData></tarn>";
  unsigned oldNames = 0;
  unsigned oldClasses = 0;
  for (unsigned left = 0; left < 4096; left += 16) {
    const auto side = loaded(Blocks::HEAP, text);
    LibTarnDocument& document = side->get();
    LibTarnCmData& cmData = *document.getLibTarnCmData();
    cmData.getLibTarnManagedObjects();
    cmData.getLibTarnManagedObjectsByClass("C300");
    auto& named = *cmData.getLibTarnManagedObject("A-100");
    auto& withoutClass = *cmData.getLibTarnManagedObject("B-1");
    auto& mask = *document.getFactory().createLibTarnManagedObject("#", "B-1", "#");
    auto& values = *document.getFactory().createLibTarnManagedObject("C300", "B-1", nullptr);
    constexpr auto BLOCK = static_cast<unsigned>(rapidxml::memory_pool<char>::dynamic_pool_size);
    document.getItsTarnDomDocument()->allocateMemory(BLOCK - left);
    const auto fails = [&](const std::function<void()>& act) {
      HeapFault fault(1, BLOCK);
      try {
        act();
        return false;
      } catch (const std::bad_alloc&) {
        return true;
      }
    };
    const bool renamed = !fails([&] { named.setDistName("A-300X"); });
    ASSERT_STREQ(named.getDistName().getText(), renamed ? "A-300X" : "A-100");
    ASSERT_EQ(cmData.getLibTarnManagedObject(renamed ? "A-300X" : "A-100"), &named);
    oldNames += renamed ? 0 : 1;
    const bool changed = !fails([&] { withoutClass.change(mask, values); });
    if (changed) {
      ASSERT_STREQ(withoutClass.getClass(), "C300");
    } else {
      ASSERT_EQ(withoutClass.getClass(), nullptr);
    }
    oldClasses += changed ? 0 : 1;
    ASSERT_EQ(brokenDocument(document), "") << left;
  }
  EXPECT_GT(oldNames, 0U);
  EXPECT_GT(oldClasses, 0U);
}

// The result of a failing map in a process of its own: 0, or the assertion "memory".
[[noreturn]] void failMapIn(const Work& work, std::size_t number) {
  Documents documents;
  work.prepare(documents);
  bool happened = false;
  {
    MapFault fault(number);
    try {
      work.act(documents);
    } catch (const std::bad_alloc&) {
    }
    happened = fault.happened();
  }
  const std::string finding = broken(documents, false);
  documents = Documents();
  std::fprintf(stderr, "%s%s\n", finding.c_str(), happened ? "went on" : "all went well");
  _exit(finding.empty() ? 0 : 1);
}

TEST(MemoryFaultDeathTest, EveryMapMayFail) {
  for (const Work& work : allWorks(Blocks::MAPS)) {
    SCOPED_TRACE(work.name);
    std::size_t number = 1;
    for (;; ++number) {
      ASSERT_LT(number, 1000U);
      // The process ends with the assertion as long as there is a map that can fail.
      std::string outcome;
      const auto isKnownEnd = [&outcome](int status) {
        outcome = WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT ? "assertion"
                  : WIFEXITED(status) && WEXITSTATUS(status) == 0    ? "well"
                                                                     : "";
        return !outcome.empty();
      };
      ASSERT_EXIT(failMapIn(work, number), isKnownEnd, "memory|went on|all went well");
      if (outcome == "well") break;
    }
    // Those two take nothing from the pool, or little.
    const std::string name = work.name;
    if (tarn_test::canFailMaps() && name != "print" && name != "change") {
      EXPECT_GT(number, 1U);
    }
  }
}

TEST(MemoryFaultTest, EveryMapMayFailForADocumentThatThrows) {
  for (const Work& work : allWorks(Blocks::MAPS_THAT_THROW)) {
    SCOPED_TRACE(work.name);
    std::size_t exceptions = 0;
    for (bool done = false; !done;) {
      ASSERT_LT(exceptions, 1000U);
      tarn_test::CapturedLog log;
      Documents documents;
      work.prepare(documents);
      done = true;
      {
        MapFault fault(exceptions + 1);
        try {
          work.act(documents);
        } catch (const std::bad_alloc&) {
          done = false;
          ++exceptions;
        }
        EXPECT_EQ(done, !fault.happened());
      }
      const bool loading = std::string(work.name).find("load") == 0;
      ASSERT_EQ(broken(documents, done || !loading), "") << "fault " << exceptions;
      // Memory is available again.
      if (!done && documents.source) {
        ASSERT_EQ(documents.source->get().parse(documents.sourceText.c_str(), true), 0);
        ASSERT_EQ(broken(documents, true), "") << "fault " << exceptions;
      }
    }
    const std::string name = work.name;
    if (tarn_test::canFailMaps() && name != "print" && name != "change") {
      EXPECT_GT(exceptions, 0U);
    }
  }
}

TEST(MemoryFaultTest, CheckOfATextThrowsWithoutMaps) {
  const std::string text = documentText(0, 1) + std::string(1, '\0');
  const auto check = [&text] {
    const auto read = [&text] { return std::vector<char>(text.begin(), text.end()); };
    return LibTarnDocument::validate(read).code == 0;
  };
  EXPECT_TRUE(check());
  const MapFault fault(1);
  if (tarn_test::canFailMaps()) {
    EXPECT_THROW(check(), std::bad_alloc);
  } else {
    EXPECT_TRUE(check());
  }
}

// A host's pool that has no memory for one request.
class FailingPool : public libDomXml::IMemoryPool {
 public:
  explicit FailingPool(std::size_t number) : callsToFault_(number) {}

  void* allocateMemory(unsigned int size) override {
    if (callsToFault_ > 0 && --callsToFault_ == 0) return nullptr;
    return memory_.allocateMemory(size);
  }
  bool happened() const { return callsToFault_ == 0; }

 private:
  libDomXml::DomDocument memory_{false};
  std::size_t callsToFault_;
};

// Makes, links, changes and copies elements in that pool.
void workIn(FailingPool& pool) {
  libtarn::util::TarnFactory factory(pool);
  LibTarnManagedObject* const made =
      factory.createLibTarnManagedObject("C", "A-1", Operation::UPDATE, "1");
  LibTarnCmData* const cmData = factory.createLibTarnCmData(LibTarnCmData::Type::PLAN);
  cmData->addLibTarnManagedObject(*made);
  cmData->setLibTarnHeader(*factory.createLibTarnHeader());
  cmData->getLibTarnHeader()->addLog(*factory.createLog("a", "b", "c"));
  for (int i = 0; i < 200; ++i) {
    const std::string name = std::to_string(i);
    made->addParameter(*factory.createScalar(name.c_str(), "1"));
    made->addParameter(*factory.createList(name.c_str()));
    cmData->addLibTarnManagedObject(
        *factory.createLibTarnManagedObject("C", ("B-" + name).c_str(), nullptr));
  }
  made->setDistName("A-2");
  cmData->addLibTarnManagedObject(dynamic_cast<LibTarnManagedObject&>(*made->clone(factory)));
}

[[noreturn]] void failPoolAt(std::size_t number) {
  bool happened = false;
  {
    FailingPool pool(number);
    try {
      workIn(pool);
    } catch (const std::bad_alloc&) {
    }
    happened = pool.happened();
  }
  std::fprintf(stderr, happened ? "went on\n" : "all went well\n");
  _exit(happened ? 2 : 0);
}

TEST(MemoryFaultDeathTest, EveryRequestToAPoolOfTheHostMayFail) {
  std::size_t assertions = 0;
  std::size_t exceptions = 0;
  for (std::size_t number = 1;; ++number) {
    ASSERT_LT(number, 20000U);
    int code = -1;
    const auto isKnownEnd = [&code](int status) {
      code = WIFEXITED(status) ? WEXITSTATUS(status) : WTERMSIG(status) == SIGABRT ? 100 : 101;
      return code == 0 || code == 2 || code == 100;
    };
    ASSERT_EXIT(failPoolAt(number), isKnownEnd, "memory|went on|all went well");
    if (code == 0) break;
    ++(code == 100 ? assertions : exceptions);
    // There are thousands of requests; the first ones have every kind.
    if (number > 400) number += 16;
  }
  EXPECT_GT(assertions, 100U);
  EXPECT_GT(exceptions, 0U);
}

}  // namespace
