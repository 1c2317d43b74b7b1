#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"
#include "libtarn/model/indexation/TarnMapIndex.hpp"
#include "libtarn/model/indexation/TarnUniqueAndNonUniqueMultiIndex.hpp"
#include "support/CapturedLog.hpp"
#include "support/SmallStack.hpp"
#include "support/consistency.hpp"

// The library calls the functions of a host's indexes, node classes and name validators in the
// documented order, also where it is faster with its own classes.

namespace {

using namespace libtarn::model;
using namespace libtarn::model::indexation;
using libtarn::editor::TarnMerge;
using tarn_test::CapturedLog;
using Calls = std::vector<std::string>;

std::string document(const std::string& content) {
  return "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='actual'>" + content +
         "</cmData></tarn>";
}

std::string object(const std::string& distName, const std::string& content = "") {
  return "<managedObject class='C' distName='" + distName + "'>" + content + "</managedObject>";
}

// Indexes

/// The library's index with another add(), which records its calls and can refuse a name.
class PickyScalarIndex : public TarnMapIndex<Scalar, ScalarNameExtractor> {
 public:
  PickyScalarIndex(libDomXml::IMemoryPool& pool, Calls& calls)
      : TarnMapIndex(pool), calls_(calls) {}
  bool add(Scalar* element) override {
    calls_.push_back("p " + element->getId());
    return element->getId() != "refused" && TarnMapIndex::add(element);
  }

 private:
  Calls& calls_;
};

class PickyListIndex : public TarnMapIndex<List, ListNameExtractor> {
 public:
  PickyListIndex(libDomXml::IMemoryPool& pool, Calls& calls) : TarnMapIndex(pool), calls_(calls) {}
  bool add(List* element) override {
    calls_.push_back("list " + element->getId());
    return element->getId() != "refused" && TarnMapIndex::add(element);
  }

 private:
  Calls& calls_;
};

using LibraryObjectIndex =
    TarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject, ManagedObjectDistNameExtractor,
                                     ManagedObjectClassNameExtractor>;

class PickyObjectIndex : public LibraryObjectIndex {
 public:
  PickyObjectIndex(libDomXml::IMemoryPool& pool, Calls& calls)
      : LibraryObjectIndex(pool), calls_(calls) {}
  bool add(LibTarnManagedObject* element) override {
    const std::string name = element->getDistName().getText();
    calls_.push_back("object " + name);
    return name != "A-13" && LibraryObjectIndex::add(element);
  }

 private:
  Calls& calls_;
};

/// Overrides addAll(), which gets all objects at once.
class BulkObjectIndex : public PickyObjectIndex {
 public:
  using PickyObjectIndex::PickyObjectIndex;
  bool addAll(const ManagedObjectEntry* entries, std::size_t count) override {
    asked.clear();
    for (std::size_t i = 0; i < count; ++i) {
      asked += std::to_string(entries[i].serial) + ":" + entries[i].key + " ";
      if (std::string(entries[i].key) == "A-0") return false;
    }
    for (std::size_t i = 0; i < count; ++i) LibraryObjectIndex::add(entries[i].object);
    return true;
  }

  std::string asked;
};

class HostIndexFactory : public TarnIndexFactory {
 public:
  explicit HostIndexFactory(libDomXml::IMemoryPool& pool) : TarnIndexFactory(pool), pool_(pool) {}

  ITarnUniqueIndex<Scalar>* createUniqueScalarNameTarnIndex() const override {
    return &scalars_.emplace_back(pool_, calls);
  }
  ITarnUniqueIndex<List>* createUniqueIndexForList() const override {
    return &lists_.emplace_back(pool_, calls);
  }
  ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>* createUniqueAndNonUniqueMultiIndex()
      const override {
    if (isBulk) return &bulk.emplace_back(pool_, calls);
    return &objects_.emplace_back(pool_, calls);
  }

  bool isBulk = false;
  mutable Calls calls;
  mutable std::deque<BulkObjectIndex> bulk;

 private:
  libDomXml::IMemoryPool& pool_;
  mutable std::deque<PickyScalarIndex> scalars_;
  mutable std::deque<PickyListIndex> lists_;
  mutable std::deque<PickyObjectIndex> objects_;
};

class HostIndexTest : public ::testing::Test {
 protected:
  // Returns the code of the parse.
  int parse(const std::string& content) {
    factory.calls.clear();
    return loaded.parse(document(content).c_str(), false);
  }
  const std::string& message() const { return loaded.getDiagnostic().message; }

  LibTarnDocument pool;
  HostIndexFactory factory{*pool.getItsTarnDomDocument()};
  LibTarnDocument loaded{new TarnDomDocument(nullptr, &factory)};
};

TEST_F(HostIndexTest, IndexThatOverridesAddOnlyIsAskedForEveryChild) {
  ASSERT_EQ(parse(object("A-2",
                         "<p name='y'/><list name='l'><item><p name='c'/></item></list>"
                         "<p name='x'/>") +
                  object("A-1", "<p name='z'/>")),
            0);
  EXPECT_EQ(factory.calls,
            (Calls{"object A-2", "p y", "p x", "list l", "p c", "object A-1", "p z"}));
  EXPECT_NE(loaded.getLibTarnCmData()->getLibTarnManagedObject("A-1"), nullptr);
}

TEST_F(HostIndexTest, RefusalIsADuplicateOfTheIndexsOwnMaking) {
  EXPECT_EQ(parse(object("A-1") + object("A-13")), 2);
  EXPECT_EQ(message(),
            "The 'cmData' element already contains a 'managedObject' element with "
            "'distName=A-13'");
  EXPECT_EQ(parse(object("A-1", "<p name='refused'/>")), 2);
  EXPECT_EQ(message(), "The 'A-1' element already contains a 'p' element with 'name=refused'");
  EXPECT_EQ(parse(object("A-1", "<list name='refused'/>")), 2);
  EXPECT_EQ(message(), "The 'A-1' element already contains a 'list' element with 'name=refused'");
  EXPECT_EQ(parse(object("A-1", "<list name='l'><item><p name='refused'/></item></list>")), 2);
  EXPECT_EQ(message(),
            "The 'A-1(list: l)' element already contains a 'p' element with 'name=refused'");
}

TEST_F(HostIndexTest, AddAllIsOfferedAllObjectsInDocumentOrder) {
  factory.isBulk = true;
  ASSERT_EQ(parse(object("A-2", "<p name='x'/>") + object("A-1")), 0);
  ASSERT_EQ(factory.bulk.size(), 1U);
  EXPECT_EQ(factory.bulk.back().asked, "0:A-2 1:A-1 ");
  EXPECT_EQ(factory.calls, (Calls{"p x"}));
  EXPECT_EQ(loaded.getLibTarnCmData()->getManagedObjectNumber(), 2U);
  // Objects that it does not take are added one after the other.
  ASSERT_EQ(parse(object("A-2") + object("A-0")), 0);
  EXPECT_EQ(factory.calls, (Calls{"object A-2", "object A-0"}));
}

// Where the name is looked up first, the result of add() is ignored.
TEST_F(HostIndexTest, EditsAskForTheNameFirstAndAddWhateverTheIndexAnswers) {
  ASSERT_EQ(parse(object("A-1", "<p name='x'/>")), 0);
  auto& factoryOf = loaded.getFactory();
  LibTarnCmData& data = *loaded.getLibTarnCmData();
  factory.calls.clear();
  data.addLibTarnManagedObject(*factoryOf.createLibTarnManagedObject("C", "A-1", nullptr));
  EXPECT_EQ(factory.calls, Calls{});
  LibTarnManagedObject* const refused = factoryOf.createLibTarnManagedObject("C", "A-13", nullptr);
  data.addLibTarnManagedObject(*refused);
  EXPECT_EQ(factory.calls, (Calls{"object A-13"}));
  EXPECT_EQ(data.getLibTarnManagedObject("A-1")->getNextSiblingElement(), refused);
  LibTarnManagedObject& first = *data.getLibTarnManagedObject("A-1");
  factory.calls.clear();
  EXPECT_EQ(first.addParameter(*factoryOf.createScalar("x", "2")), 1);
  EXPECT_EQ(first.addParameter(*factoryOf.createScalar("refused", "2")), 0);
  EXPECT_EQ(first.addParameter(*factoryOf.createList("refused")), 0);
  EXPECT_EQ(factory.calls, (Calls{"p refused", "list refused"}));
  EXPECT_NE(first.getFirstChildElement("list"), nullptr);
  Structure& item = *factoryOf.createStructure();
  factory.calls.clear();
  EXPECT_EQ(item.addComponent(*factoryOf.createScalar("refused", "1")), 0);
  EXPECT_EQ(factory.calls, (Calls{"p refused"}));
  EXPECT_NE(item.getFirstChildElement("p"), nullptr);
}

// Node classes

Calls* nodeCalls = nullptr;

/// An object whose name differs from its attribute, and which records its calls.
class HostObject : public LibTarnManagedObjectImp {
 public:
  using LibTarnManagedObjectImp::LibTarnManagedObjectImp;
  DistinguishedName getDistName() const override {
    const char* const text = LibTarnManagedObjectImp::getDistName().getText();
    return DistinguishedName(text && std::string(text) == "A-1" ? "A-7" : text);
  }
  void dispatchToSelf(validation::Validator& validator) const override {
    nodeCalls->push_back(std::string("visit ") + getDistName().getText());
    LibTarnManagedObjectImp::dispatchToSelf(validator);
  }
};

class CopyingObject : public HostObject {
 public:
  using HostObject::HostObject;
  using LibTarnManagedObjectImp::clone;
  LibTarnManagedObjectImp* clone(libtarn::util::TarnFactory& factory) const override {
    nodeCalls->push_back(std::string("clone ") + getDistName().getText());
    auto* const copy = LibTarnManagedObjectImp::clone(factory);
    copy->setAttribute("copied", "yes");
    return copy;
  }
};

template <class Object>
class HostNodeDocument : public TarnDomDocument {
 public:
  HostNodeDocument() : TarnDomDocument(nullptr, nullptr) {}
  TarnDomElement* allocate_node(rapidxml::node_type type, const char* name, const char* value,
                                std::size_t nameSize, std::size_t valueSize) override {
    TarnDomElement* const made =
        TarnDomDocument::allocate_node(type, name, value, nameSize, valueSize);
    auto* const object = dynamic_cast<LibTarnManagedObjectImp*>(made);
    if (!object) return made;
    void* const memory = allocateMemory(sizeof(Object));
    return new (memory)
        Object(this, object->getDistNameValidator(), getFactory().getIndexFactory(), getFactory());
  }
};

// Makes the node of one element without asking the library.
class ForeignNodeDocument : public TarnDomDocument {
 public:
  explicit ForeignNodeDocument(int foreign)
      : TarnDomDocument(nullptr, nullptr), untilForeign_(foreign) {}
  TarnDomElement* allocate_node(rapidxml::node_type type, const char* name, const char* value,
                                std::size_t nameSize, std::size_t valueSize) override {
    if (type == rapidxml::node_element && untilForeign_-- == 0) {
      return getFactory().allocateScalarNode();
    }
    return TarnDomDocument::allocate_node(type, name, value, nameSize, valueSize);
  }

 private:
  int untilForeign_;
};

TEST(ForeignNodeTest, WhatIsBelowANodeOfTheHostIsNotOnTheTopLevel) {
  struct {
    const char* text;
    int foreign;
  } const rows[] = {{"<foreign><tarn/></foreign><tarn/>", 0},
                    {"<foreign><?xml a='b'?></foreign><?xml a='b'?>", 0},
                    {"<tarn/><foreign><tarn/></foreign>", 1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    CapturedLog log;
    LibTarnDocument document(new ForeignNodeDocument(row.foreign));
    EXPECT_EQ(document.parse(row.text, false), 1);
    EXPECT_EQ(document.getDiagnostic().message, "unknown TARN object");
    EXPECT_EQ(tarn_test::brokenDocument(document), "");
    EXPECT_EQ(document.parse("<tarn/>", false), 0);
  }
}

class HostNodeTest : public ::testing::Test {
 protected:
  void SetUp() override { nodeCalls = &calls; }
  void TearDown() override { nodeCalls = nullptr; }

  Calls calls;
  LibTarnDocument renamed{new HostNodeDocument<HostObject>};
  LibTarnDocument copying{new HostNodeDocument<CopyingObject>};
};

const char* const HEADER = "<header/>";

TEST_F(HostNodeTest, ParseIndexesByTheNameThatTheObjectGives) {
  ASSERT_EQ(renamed.parse(document(object("A-1") + object("A-2")).c_str(), false), 0);
  const LibTarnCmData& data = *renamed.getLibTarnCmData();
  EXPECT_TRUE(data.hasLibTarnManagedObject("A-7"));
  EXPECT_FALSE(data.hasLibTarnManagedObject("A-1"));
  // The duplicate name is the one that the object returns.
  EXPECT_EQ(renamed.parse(document(object("A-1") + object("A-7")).c_str(), false), 2);
}

TEST_F(HostNodeTest, ValidationVisitsEachObjectOnceInTheOrderOfNames) {
  const std::string text = document(HEADER + object("A-9") + object("A-1") + object("A-8"));
  ASSERT_EQ(renamed.parse(text.c_str(), true), 0);
  EXPECT_EQ(calls, (Calls{"visit A-7", "visit A-8", "visit A-9"}));
  calls.clear();
  EXPECT_EQ(renamed.validate(), 0);
  EXPECT_EQ(calls, (Calls{"visit A-7", "visit A-8", "visit A-9"}));
}

TEST_F(HostNodeTest, CopiesAreAskedOfAClassThatHasItsOwn) {
  ASSERT_EQ(copying.parse(document(object("A-1", object("A-2"))).c_str(), false), 0);
  const auto& data = dynamic_cast<LibTarnCmDataImp&>(*copying.getLibTarnCmData());
  LibTarnDocument other;
  const auto* const copy = data.clone(other.getFactory());
  EXPECT_EQ(calls, (Calls{"clone A-7", "clone A-2"}));
  const auto* const first = copy->getFirstChild("managedObject");
  EXPECT_STREQ(first->getAttribute("copied"), "yes");
  EXPECT_STREQ(first->getFirstChild("managedObject")->getAttribute("copied"), "yes");
}

TEST_F(HostNodeTest, CopiesOfAClassWithoutItsOwnDoNotRecurse) {
  constexpr int DEPTH = 100000;
  std::string text;
  for (int i = 0; i < DEPTH; ++i) text += "<managedObject class='C' distName='A-1'>";
  for (int i = 0; i < DEPTH; ++i) text += "</managedObject>";
  ASSERT_EQ(renamed.parse(document(text).c_str(), false), 0);
  const auto& data = dynamic_cast<LibTarnCmDataImp&>(*renamed.getLibTarnCmData());
  LibTarnDocument other;
  int depth = 0;
  tarn_test::runOnSmallStack([&] {
    const TarnDomElement* copy = data.clone(other.getFactory());
    while ((copy = copy->getFirstChild("managedObject"))) ++depth;
  });
  EXPECT_EQ(depth, DEPTH);
}

// Untyped elements

class UntypedHostElement : public libDomXml::DomElement {
 public:
  using DomElement::DomElement;
};

class CopyingHostElement : public libDomXml::DomElement {
 public:
  using DomElement::DomElement;
  libDomXml::IDomElement* clone() const override { return marked(DomElement::clone()); }
  libDomXml::IDomElement* clone(libDomXml::IMemoryPool* pool) const override {
    return marked(DomElement::clone(pool));
  }

 private:
  static libDomXml::IDomElement* marked(libDomXml::IDomElement* copy) {
    copy->setAttribute("copied", "yes");
    return copy;
  }
};

template <class Element>
Element* makeIn(libDomXml::DomDocument& document, const char* name) {
  void* const memory = document.allocateMemory(sizeof(Element));
  auto* const element = new (memory) Element(&document);
  element->setTagName(name);
  return element;
}

TEST(HostElementTest, ChildrenWithACloneOfTheirOwnAreAskedForBothKinds) {
  libDomXml::DomDocument document(false);
  libDomXml::DomDocument other(false);
  auto* const top = makeIn<libDomXml::DomElement>(document, "top");
  auto* const child = makeIn<CopyingHostElement>(document, "child");
  top->addChild(child);
  child->addChild(makeIn<CopyingHostElement>(document, "grandchild"));
  for (const libDomXml::IDomElement* copy : {top->clone(), top->clone(&other)}) {
    const libDomXml::IDomElement* const first = copy->getFirstChild(nullptr);
    EXPECT_STREQ(first->getAttribute("copied"), "yes");
    EXPECT_STREQ(first->getFirstChild("grandchild")->getAttribute("copied"), "yes");
    EXPECT_EQ(copy->getAttribute("copied"), nullptr);
  }
}

TEST(HostElementTest, CopiesOfAClassWithoutACloneOfItsOwnDoNotRecurse) {
  constexpr int DEPTH = 100000;
  libDomXml::DomDocument document(false);
  libDomXml::DomDocument other(false);
  auto* const top = makeIn<UntypedHostElement>(document, "e");
  libDomXml::DomElement* last = top;
  for (int i = 1; i < DEPTH; ++i) {
    auto* const child = makeIn<UntypedHostElement>(document, "e");
    last->append_node(child);
    last = child;
  }
  for (const bool intoPool : {false, true}) {
    int depth = 0;
    tarn_test::runOnSmallStack([&] {
      const libDomXml::IDomElement* copy = intoPool ? top->clone(&other) : top->clone();
      for (; copy; copy = copy->getFirstChild(nullptr)) ++depth;
    });
    EXPECT_EQ(depth, DEPTH);
  }
}

// Name validators

class HostNames : public IDistinguishedNameValidator {
 public:
  bool isValid(const char* name) const override {
    asked.emplace_back(name);
    if (whenAsked) whenAsked();
    return true;
  }

  mutable Calls asked;
  void (*whenAsked)() = nullptr;
};

class HostNamesTest : public ::testing::Test {
 protected:
  std::size_t objectsInIndex() const { return loaded.getLibTarnCmData()->getManagedObjectNumber(); }

  HostNames names;
  LibTarnDocument loaded{new TarnDomDocument(&names, nullptr)};
  const std::string text =
      document(HEADER + object("A-3", "<p name='x'/>") + object("A-1") + object("A-2"));
};

TEST_F(HostNamesTest, ValidatorIsAskedOncePerObjectInTheOrderOfNames) {
  ASSERT_EQ(loaded.parse(text.c_str(), true), 0);
  EXPECT_EQ(names.asked, (Calls{"A-1", "A-2", "A-3"}));
  names.asked.clear();
  EXPECT_EQ(loaded.validate(), 0);
  EXPECT_EQ(names.asked, (Calls{"A-1", "A-2", "A-3"}));
  names.asked.clear();
  ASSERT_EQ(loaded.parse(text.c_str(), false), 0);
  EXPECT_EQ(names.asked, Calls{});
}

TEST_F(HostNamesTest, ValidatorIsNotCalledForAMalformedText) {
  EXPECT_EQ(loaded.parse((text + "<").c_str(), true), 1);
  EXPECT_EQ(loaded.parse(document(HEADER + object("A-1") + object("A-1")).c_str(), true), 2);
  EXPECT_EQ(names.asked, Calls{});
}

TEST_F(HostNamesTest, ValidatorIsAskedWhenTreeAndIndexesAreComplete) {
  static const LibTarnDocument* asked = nullptr;
  static std::size_t seen = 0;
  asked = &loaded;
  names.whenAsked = [] { seen = asked->getLibTarnCmData()->getManagedObjectNumber(); };
  ASSERT_EQ(loaded.parse(text.c_str(), true), 0);
  EXPECT_EQ(seen, 3U);
}

TEST_F(HostNamesTest, WhatItThrowsLeavesTheTreeComplete) {
  names.whenAsked = [] { throw exceptions::ModelException("no such name"); };
  EXPECT_EQ(loaded.parse(text.c_str(), true), 2);
  EXPECT_EQ(loaded.getDiagnostic().message, "no such name");
  EXPECT_EQ(objectsInIndex(), 3U);
  names.whenAsked = [] { throw std::runtime_error("out of order"); };
  EXPECT_THROW(loaded.parse(text.c_str(), true), std::runtime_error);
  EXPECT_EQ(objectsInIndex(), 3U);
  EXPECT_NE(loaded.getLibTarnCmData()->getLibTarnManagedObject("A-3")->getScalarParameter("x"),
            nullptr);
}

// Items that are copied

std::string messageOf(const std::function<void()>& copy) {
  try {
    copy();
  } catch (const exceptions::DuplicateElementException& error) {
    return error.what();
  }
  return "nothing was thrown";
}

// The duplicate is in a nested item, which nothing looks at before the copy.
TEST(CopiedItemTest, DuplicateIsReportedWithoutAPathHoweverTheItemIsCopied) {
  const std::string list =
      "<list name='l'><item><p name='x'/><item><p name='c'/><p name='c'/></item></item></list>";
  LibTarnDocument source;
  ASSERT_EQ(source.parse(document(object("A-1", list)).c_str(), false), 0);
  LibTarnDocument target;
  ASSERT_EQ(target.parse(document(object("A-1")).c_str(), false), 0);
  auto& factory = target.getFactory();
  const auto& top = dynamic_cast<LibTarnManagedObjectImp&>(
      *source.getLibTarnCmData()->getLibTarnManagedObject("A-1"));
  const auto& listOfIt = dynamic_cast<ListImp&>(*top.getListParameter("l"));
  const auto& item = dynamic_cast<StructureImp&>(*listOfIt.getStructuredValues());
  auto* const emptyList = dynamic_cast<ListImp*>(factory.createList("m"));

  const std::string expected =
      "The '(list: )' element already contains a 'p' element with 'name=c'";
  EXPECT_EQ(messageOf([&] { item.clone(factory); }), expected);
  EXPECT_EQ(messageOf([&] { listOfIt.clone(factory); }), expected);
  EXPECT_EQ(messageOf([&] { top.clone(factory); }), expected);
  EXPECT_EQ(messageOf([&] { listOfIt.cloneChildren(emptyList); }), expected);
  EXPECT_EQ(messageOf([&] { TarnMerge(target).mergeDocument(source); }), expected);
}

}  // namespace
