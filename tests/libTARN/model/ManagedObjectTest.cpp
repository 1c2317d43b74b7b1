// Managed objects, their parameters, lists, items and extensions.

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/UniqueContainer.hpp"
#include "libtarn/model/exceptions/DuplicateElementException.hpp"
#include "support/CapturedLog.hpp"
#include "support/HeapCount.hpp"
#include "support/documents.hpp"
#include "support/treeDump.hpp"

namespace {

using namespace libtarn::model;
using libtarn::util::TarnFactory;
using tarn_test::CapturedLog;
using tarn_test::cmDataText;
using tarn_test::namesOf;

using Names = std::vector<std::string>;
using Operation = LibTarnManagedObject::Operation;

class ManagedObjectTest : public ::testing::Test {
 protected:
  // A parsed object: in the cmData of this document if it is the first, otherwise in none.
  LibTarnManagedObjectImp& parsed(const std::string& text) {
    documents_.push_back(std::make_unique<LibTarnDocument>());
    LibTarnDocument& document = *documents_.back();
    EXPECT_EQ(document.parse(cmDataText(text).c_str(), false), 0);
    log_.clear();
    return dynamic_cast<LibTarnManagedObjectImp&>(
        **document.getLibTarnCmData()->getLibTarnManagedObjects().begin());
  }
  bool matches(const std::string& object, const std::string& pattern) {
    return parsed(object).match(parsed(pattern));
  }
  TarnFactory& factory() { return document_.getFactory(); }
  Scalar& scalar(const char* name, const char* value = nullptr) {
    return *factory().createScalar(name, value);
  }
  LibTarnManagedObjectImp& own() {
    return dynamic_cast<LibTarnManagedObjectImp&>(
        *factory().createLibTarnManagedObject("C", "A-1", nullptr));
  }

  CapturedLog log_;
  LibTarnDocument document_;
  std::vector<std::unique_ptr<LibTarnDocument>> documents_;
};

TEST_F(ManagedObjectTest, FactoryBuildsObjectsWithTheirAttributesInOrder) {
  const auto dump = [](const LibTarnManagedObject* object) {
    return tarn_test::dump(dynamic_cast<const LibTarnManagedObjectImp&>(*object));
  };
  EXPECT_EQ(dump(factory().createLibTarnManagedObject("C", "A-1", nullptr)),
            "managedObject(class=C distName=A-1)");
  EXPECT_EQ(dump(factory().createLibTarnManagedObject("C", "A-1", "2")),
            "managedObject(class=C distName=A-1 version=2)");
  EXPECT_EQ(dump(factory().createLibTarnManagedObject("C", "A-1", Operation::DELETE, "2")),
            "managedObject(class=C distName=A-1 operation=delete version=2)");
  EXPECT_EQ(dump(factory().createLibTarnManagedObject("C", DistinguishedName("A-1"),
                                                      Operation::AUTO, nullptr)),
            "managedObject(class=C distName=A-1 operation=auto)");
  EXPECT_EQ(factory().createLibTarnManagedObject("C", "A", "2"), nullptr);
  EXPECT_EQ(factory().createLibTarnManagedObject("C", "_-_", Operation::AUTO, "2"), nullptr);
  EXPECT_EQ(tarn_test::dump(dynamic_cast<ScalarImp&>(scalar("n", "v"))), "p(name=n)\"v\"");
  EXPECT_EQ(tarn_test::dump(dynamic_cast<ScalarImp&>(scalar(nullptr))), "p");
  EXPECT_EQ(tarn_test::dump(dynamic_cast<ListImp&>(*factory().createList("l"))), "list(name=l)");
  EXPECT_EQ(tarn_test::dump(dynamic_cast<StructureImp&>(*factory().createStructure())), "item");
  EXPECT_EQ(
      tarn_test::dump(dynamic_cast<LibTarnExtensionImp&>(*factory().createLibTarnExtension("e"))),
      "extension(name=e)");
  EXPECT_TRUE(factory().createLibTarnCmData(LibTarnCmData::Type::PLAN)->getType() ==
              LibTarnCmData::Type::PLAN);
}

TEST_F(ManagedObjectTest, ScalarParametersAreAddedFoundAndRemoved) {
  LibTarnManagedObjectImp& object = own();
  EXPECT_EQ(object.addParameter(scalar("b", "1")), 0);
  EXPECT_EQ(object.addParameter(scalar("a", "2")), 0);
  EXPECT_EQ(object.addParameter(scalar("b", "3")), 1);
  EXPECT_EQ(tarn_test::dump(object),
            "managedObject(class=C distName=A-1){p(name=b)\"1\" p(name=a)\"2\"}");
  EXPECT_EQ(namesOf(object.getScalarParameters()), (Names{"a", "b"}));
  EXPECT_TRUE(object.hasScalarParameter("b"));
  EXPECT_STREQ(object.getScalarParameter("b")->getValue(), "1");
  EXPECT_EQ(object.getScalarParameter("c"), nullptr);
  EXPECT_EQ(object.removeScalarParameter("c"), 2);
  EXPECT_EQ(object.removeScalarParameter("b"), 0);
  EXPECT_FALSE(object.hasScalarParameter("b"));
  object.getScalarParameter("a")->removeThisElement();
  EXPECT_EQ(object.removeScalarParameter("a"), 1);
  EXPECT_EQ(object.removeScalarParameter("a"), 2);
}

TEST_F(ManagedObjectTest, ListParametersAreAddedFoundAndRemoved) {
  LibTarnManagedObjectImp& object = own();
  EXPECT_EQ(object.addParameter(*factory().createList("b")), 0);
  EXPECT_EQ(object.addParameter(*factory().createList("a")), 0);
  EXPECT_EQ(object.addParameter(*factory().createList("a")), 1);
  EXPECT_EQ(namesOf(object.getListParameters()), (Names{"a", "b"}));
  EXPECT_TRUE(object.hasListParameter("a"));
  EXPECT_EQ(object.getListParameter("c"), nullptr);
  EXPECT_EQ(object.removeListParameter("a"), 0);
  EXPECT_EQ(object.removeListParameter("a"), 2);
  EXPECT_EQ(tarn_test::dump(object), "managedObject(class=C distName=A-1){list(name=b)}");
}

TEST_F(ManagedObjectTest, ExtensionsAreAddedFoundAndRemoved) {
  LibTarnManagedObjectImp& object = own();
  EXPECT_EQ(object.getExtensions(), nullptr);
  LibTarnExtension& extension = *factory().createLibTarnExtension("e");
  EXPECT_EQ(object.addParameter(extension), 0);
  EXPECT_EQ(object.addParameter(*factory().createLibTarnExtension("e")), 1);
  EXPECT_EQ(object.addParameter(*factory().createLibTarnExtension("f")), 0);
  EXPECT_EQ(object.getExtension("e"), &extension);
  EXPECT_EQ(object.getExtension("x"), nullptr);
  EXPECT_EQ(object.getExtensions(), &extension);
  EXPECT_STREQ(extension.getNextSiblingElement()->getName(), "f");
  EXPECT_EQ(extension.getNextSiblingElement()->getNextSiblingElement(), nullptr);
  EXPECT_EQ(object.removeExtension("x"), 2);
  EXPECT_EQ(object.removeExtension("e"), 0);
  EXPECT_FALSE(object.hasExtension("e"));
  EXPECT_TRUE(object.hasExtension("f"));
  EXPECT_EQ(extension.getNextSiblingElement(), nullptr);
}

TEST_F(ManagedObjectTest, ExtensionKeepsItsParametersUnique) {
  LibTarnExtension& extension = *factory().createLibTarnExtension("e");
  EXPECT_FALSE(extension.hasParameters());
  EXPECT_EQ(extension.addParameter(scalar("x", "1")), 0);
  EXPECT_EQ(extension.addParameter(scalar("x", "2")), 1);
  EXPECT_EQ(extension.addParameter(scalar(nullptr)), 0);
  EXPECT_EQ(extension.addParameter(scalar("")), 1);
  EXPECT_TRUE(extension.hasParameters());
  EXPECT_STREQ(extension.getParameters()->getValue(), "1");
  EXPECT_TRUE(extension.hasParameter(""));
  EXPECT_EQ(extension.getParameter("y"), nullptr);
  EXPECT_STREQ(extension.getParameter("x")->getValue(), "1");
  EXPECT_EQ(extension.removeParameter("y"), 2);
  EXPECT_EQ(extension.removeParameter("x"), 0);
  EXPECT_FALSE(extension.hasParameter("x"));
}

TEST_F(ManagedObjectTest, ContainerReportsMissesAndDuplicates) {
  auto& extension = dynamic_cast<LibTarnExtensionImp&>(*factory().createLibTarnExtension("e"));
  const UniqueContainer<LibTarnExtensionImp, ScalarImp, std::string> container("name");
  const auto message = [](const auto& call) -> std::string {
    try {
      call();
    } catch (const exceptions::ModelException& error) {
      return error.what();
    }
    return "";
  };
  const std::string miss = "Child 'p' element identified by 'name=x' not found";
  EXPECT_EQ(message([&] { container.get(extension, "x"); }), miss);
  EXPECT_EQ(message([&] { container.remove(extension, "x"); }), miss);
  auto& x = dynamic_cast<ScalarImp&>(scalar("x"));
  container.add(extension, x);
  EXPECT_EQ(container.get(extension, "x"), &x);
  EXPECT_EQ(message([&] { container.add(extension, dynamic_cast<ScalarImp&>(scalar("x"))); }),
            "The 'extension' element already contains a 'p' element with 'name=x'");
}

// Identifiers distinguish children; the name of the attribute is only for the message.
TEST_F(ManagedObjectTest, ContainerOfAnotherAttributeComparesIdentifiersToo) {
  auto& extension = dynamic_cast<LibTarnExtensionImp&>(*factory().createLibTarnExtension("e"));
  const UniqueContainer<LibTarnExtensionImp, ScalarImp, std::string> container("id");
  container.add(extension, dynamic_cast<ScalarImp&>(scalar("x")));
  EXPECT_TRUE(container.has(extension, "x"));
  EXPECT_THROW(container.add(extension, dynamic_cast<ScalarImp&>(scalar("x"))),
               exceptions::DuplicateElementException);
}

// The names are longer than what std::string holds without an allocation.
TEST_F(ManagedObjectTest, LookUpOfAnExtensionThatIsNotThereAllocatesNothing) {
  LibTarnManagedObjectImp& object = own();
  auto& extension = dynamic_cast<LibTarnExtensionImp&>(*factory().createLibTarnExtension("e"));
  ASSERT_EQ(object.addParameter(extension), 0);
  ASSERT_EQ(extension.addParameter(scalar("x")), 0);
  const std::string name(40, 'n');
  const std::size_t before = tarn_test::heapAllocations();
  EXPECT_EQ(object.getExtension(name), nullptr);
  EXPECT_FALSE(object.hasExtension(name));
  EXPECT_EQ(object.removeExtension(name), EditResult::NoSuchElement);
  EXPECT_EQ(extension.getParameter(name), nullptr);
  EXPECT_FALSE(extension.hasParameter(name));
  EXPECT_EQ(extension.removeParameter(name), EditResult::NoSuchElement);
  EXPECT_EQ(tarn_test::heapAllocations(), before);
}

TEST_F(ManagedObjectTest, HasOperationDistinguishesAutoFromNone) {
  LibTarnManagedObject& object = own();
  EXPECT_FALSE(object.hasOperation());
  object.setOperation(Operation::AUTO);
  EXPECT_TRUE(object.hasOperation());
  object.clearOperation();
  EXPECT_FALSE(object.hasOperation());
  const LibTarnManagedObject& deleted = parsed("<managedObject operation='delete'/>");
  EXPECT_TRUE(deleted.hasOperation());
}

TEST_F(ManagedObjectTest, OperationFollowsItsAttribute) {
  LibTarnManagedObjectImp& object = own();
  EXPECT_TRUE(object.getOperation() == Operation::AUTO);
  object.setOperation(Operation::UPDATE);
  EXPECT_STREQ(object.getAttribute("operation"), "update");
  EXPECT_TRUE(object.getOperation() == Operation::UPDATE);
  object.clearOperation();
  EXPECT_EQ(object.getAttribute("operation"), nullptr);
  EXPECT_TRUE(object.getOperation() == Operation::AUTO);
  EXPECT_TRUE(parsed("<managedObject operation='delete'/>").getOperation() == Operation::DELETE);
  object.setVersion("7");
  EXPECT_STREQ(object.getVersion(), "7");
  EXPECT_STREQ(object.getClass(), "C");
  EXPECT_EQ(parsed("<managedObject/>").getClass(), nullptr);
  EXPECT_EQ(parsed("<managedObject/>").getVersion(), nullptr);
}

TEST_F(ManagedObjectTest, ListHoldsPlainValuesOrItems) {
  List& list = *factory().createList("l");
  EXPECT_FALSE(list.hasScalarValues() || list.hasStructuredValues());
  EXPECT_EQ(list.addValue(scalar(nullptr, "1")), 0);
  EXPECT_EQ(list.addValue(scalar(nullptr, "1")), 0);
  EXPECT_EQ(list.addValue(*factory().createStructure()), 1);
  EXPECT_EQ(tarn_test::dump(dynamic_cast<ListImp&>(list)), "list(name=l){p\"1\" p\"1\"}");
  EXPECT_NE(list.getScalarValues()->getNextSiblingElement(), nullptr);
  List& items = *factory().createList("i");
  EXPECT_EQ(items.addValue(*factory().createStructure()), 0);
  EXPECT_EQ(items.addValue(scalar("x")), 1);
  EXPECT_EQ(items.getScalarValues(), nullptr);
  EXPECT_EQ(items.getStructuredValues()->getNextSiblingElement(), nullptr);
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(ManagedObjectTest, ItemKeepsItsComponentsByName) {
  Structure& item = *factory().createStructure();
  EXPECT_EQ(item.addComponent(scalar("b", "1")), 0);
  EXPECT_EQ(item.addComponent(scalar("a", "2")), 0);
  EXPECT_EQ(item.addComponent(scalar("a", "3")), 1);
  EXPECT_EQ(namesOf(item.getComponents()), (Names{"a", "b"}));
  EXPECT_TRUE(item.hasComponent("a"));
  EXPECT_STREQ(item.getComponent("a")->getValue(), "2");
  EXPECT_EQ(item.getComponent("c"), nullptr);
}

TEST_F(ManagedObjectTest, ItemOutsideAListReportsDuplicatesWithoutItsParents) {
  auto& item = dynamic_cast<StructureImp&>(*factory().createStructure());
  item.addChild(&dynamic_cast<ScalarImp&>(scalar("x")));
  item.addChild(&dynamic_cast<ScalarImp&>(scalar("x")));
  try {
    item.rebuildIndexers();
    ADD_FAILURE();
  } catch (const exceptions::DuplicateElementException& error) {
    EXPECT_STREQ(error.what(),
                 "The '(list: )' element already contains a 'p' element with 'name=x'");
  }
}

TEST_F(ManagedObjectTest, ScalarReturnsNameAndValue) {
  EXPECT_EQ(scalar("").getName(), nullptr);
  EXPECT_EQ(scalar("").getId(), "");
  EXPECT_EQ(scalar("n").getId(), "n");
  Scalar& value = scalar("n");
  EXPECT_TRUE(value.isValueEmpty());
  value.setValue("abc");
  EXPECT_FALSE(value.isValueEmpty());
  value.setValue(value.getValue());
  EXPECT_STREQ(value.getValue(), "abc");
}

TEST_F(ManagedObjectTest, ElementsReturnTheirNeighbours) {
  LibTarnManagedObjectImp& object = parsed(
      "<managedObject><p name='x'/><list/><p name='y'><log/></p><extension/></managedObject>");
  const IElement* const first = object.getFirstChildElement(nullptr);
  EXPECT_EQ(first, object.getScalarParameter("x"));
  EXPECT_EQ(first->getNextSiblingElement(), object.getScalarParameter("y"));
  EXPECT_EQ(first->getNextSiblingElement()->getNextSiblingElement(), nullptr);
  EXPECT_EQ(object.getFirstChildElement("list"), object.getListParameter(""));
  EXPECT_EQ(object.getFirstChildElement("item"), nullptr);
  EXPECT_NE(object.getScalarParameter("y")->getFirstChildElement("log"), nullptr);
  EXPECT_EQ(scalar("z").getNextSiblingElement(), nullptr);
  EXPECT_EQ(factory().createList("l")->getNextSiblingElement(), nullptr);
  scalar("z").removeThisElement();
}

TEST_F(ManagedObjectTest, ElementsOfTheDomLayerAreNoParameters) {
  LibTarnManagedObjectImp& object = own();
  object.addChild(document_.getItsTarnDomDocument()->createDomElement("p", "plain"));
  object.rebuildIndexersAndInitializeEnumAndDispatchToChildren();
  EXPECT_EQ(object.getFirstChildElement(nullptr), nullptr);
  EXPECT_TRUE(object.getScalarParameters().empty());
  EXPECT_EQ(tarn_test::dump(*object.clone()), tarn_test::dump(object));
}

// match

TEST_F(ManagedObjectTest, PatternsMatchByTheirRules) {
  const char* const full =
      "<managedObject class='C' version='1' distName='A-1/B-2/C-3' operation='update'>"
      "<p name='x'>1</p><p name='y'/><list name='l'><p>2</p><p>1</p><p>3</p></list>"
      "<list name='i'><item><p name='a'>1</p><p name='b'>2</p></item><item><p name='a'>9</p></item>"
      "</list></managedObject>";
  const struct {
    const char* attributes;
    const char* body;
    bool matches;
  } cases[] = {
      {"class='#' version='#' distName='_-_'", "", true},
      {"class='#' version='#'", "", true},
      {"class='#' version='#' distName=''", "", true},
      {"class='C' version='1' distName='A-1/B-2/C-3'", "", true},
      {"class='C' version='1' distName='-1/B-'", "", true},
      {"class='C' version='1' distName='B-3'", "", false},
      {"class='D' version='1'", "", false},
      {"class='' version='1'", "", false},
      {"version='1'", "", false},
      {"class='C'", "", false},
      {"class='C' version='2'", "", false},
      {"class='C' version='1' operation='update'", "", true},
      {"class='C' version='1' operation='auto'", "", false},
      {"class='#' version='#'", "<p name='x'>1</p>", true},
      {"class='#' version='#'", "<p name='x'>2</p>", false},
      {"class='#' version='#'", "<p name='x'>#</p><p name='y'>#</p>", true},
      {"class='#' version='#'", "<p name='x'/>", true},
      {"class='#' version='#'", "<p name='y'>1</p>", false},
      {"class='#' version='#'", "<p name='z'/>", false},
      {"class='#' version='#'", "<list name='l'/>", true},
      {"class='#' version='#'", "<list name='l'><p>1</p><p>2</p><p>1</p></list>", true},
      {"class='#' version='#'", "<list name='l'><p name='#'>3</p></list>", true},
      {"class='#' version='#'", "<list name='l'><p>4</p></list>", false},
      {"class='#' version='#'", "<list name='#'><p>1</p><p>2</p></list>", true},
      {"class='#' version='#'", "<list name='#'><p>4</p></list>", false},
      {"class='#' version='#'", "<list name='m'/>", false},
      {"class='#' version='#'", "<list/>", false},
      {"class='#' version='#'", "<list name='i'><item><p name='b'>2</p></item></list>", true},
      {"class='#' version='#'", "<list name='i'><item><p name='b'>1</p></item></list>", false},
      {"class='#' version='#'", "<list name='i'><item><p name='#'>9</p></item></list>", true},
      {"class='#' version='#'", "<list name='i'><item><p>8</p></item></list>", false},
      {"class='#' version='#'", "<list name='#'><item/></list>", true},
      {"class='#' version='#'", "<extension name='nowhere'/>", true},
  };
  LibTarnManagedObjectImp& object = parsed(full);
  for (const auto& c : cases) {
    const std::string pattern =
        std::string("<managedObject ") + c.attributes + ">" + c.body + "</managedObject>";
    EXPECT_EQ(object.match(parsed(pattern)), c.matches) << pattern;
  }
}

TEST_F(ManagedObjectTest, AbsentTextsMatchOnlyAbsentOnes) {
  EXPECT_TRUE(matches("<managedObject/>", "<managedObject/>"));
  EXPECT_FALSE(matches("<managedObject class=''/>", "<managedObject/>"));
  EXPECT_FALSE(matches("<managedObject/>", "<managedObject class=''/>"));
  EXPECT_FALSE(matches("<managedObject/>", "<managedObject distName='A-1'/>"));
  EXPECT_FALSE(matches("<managedObject/>", "<managedObject operation='auto'/>"));
  EXPECT_TRUE(
      matches("<managedObject><list/></managedObject>", "<managedObject><list/></managedObject>"));
  EXPECT_FALSE(matches("<managedObject><list name=''/></managedObject>",
                       "<managedObject><list/></managedObject>"));
}

TEST_F(ManagedObjectTest, PatternOfAnotherTagDoesNotMatch) {
  LibTarnManagedObjectImp& pattern = parsed("<managedObject/>");
  pattern.setTagName("manag");
  EXPECT_FALSE(parsed("<managedObject/>").match(pattern));
  pattern.setTagName("");
  EXPECT_TRUE(parsed("<managedObject/>").match(pattern));
}

// change

TEST_F(ManagedObjectTest, ChangeReplacesFirstOccurrenceOfPatternNameOnly) {
  LibTarnManagedObjectImp& object = parsed("<managedObject distName='A-1/B-2/B-2/C-3'/>");
  const LibTarnCmData& cmData = *documents_.back()->getLibTarnCmData();
  EXPECT_TRUE(object.change(parsed("<managedObject distName='B-2'/>"),
                            parsed("<managedObject distName='D-4/E-5'/>")));
  EXPECT_STREQ(object.getDistName().getText(), "A-1/D-4/E-5/B-2/C-3");
  EXPECT_EQ(cmData.getLibTarnManagedObject("A-1/D-4/E-5/B-2/C-3"), &object);
  EXPECT_FALSE(cmData.hasLibTarnManagedObject("A-1/B-2/B-2/C-3"));
}

TEST_F(ManagedObjectTest, ChangeWithoutMatchChangesNothing) {
  LibTarnManagedObjectImp& object =
      parsed("<managedObject class='C'><p name='x'>1</p></managedObject>");
  const std::string before = tarn_test::dump(object);
  EXPECT_FALSE(object.change(parsed("<managedObject class='D'/>"),
                             parsed("<managedObject class='E'><p name='x'>2</p></managedObject>")));
  EXPECT_EQ(tarn_test::dump(object), before);
}

TEST_F(ManagedObjectTest, ChangeReplacesParametersAndListsInTheOrderOfNames) {
  LibTarnManagedObjectImp& object = parsed(
      "<managedObject distName='A-1'><p name='z'>1</p><p name='k'>1</p><list "
      "name='l'><p>1</p></list>"
      "<extension name='e'/></managedObject>");
  EXPECT_TRUE(object.change(
      parsed("<managedObject/>"),
      parsed("<managedObject distName='_-_' version='3' operation='delete'><p name='z'>2</p>"
             "<p name='b'>3</p><list name='l'><item><p name='q'/></item></list>"
             "<extension name='f'/></managedObject>")));
  EXPECT_EQ(tarn_test::dump(object),
            "managedObject(distName=A-1 operation=delete version=3){p(name=k)\"1\" "
            "extension(name=e) p(name=b)\"3\" p(name=z)\"2\" list(name=l){item{p(name=q)}}}");
  EXPECT_TRUE(object.getOperation() == Operation::DELETE);
  EXPECT_STREQ(object.getScalarParameter("z")->getValue(), "2");
  EXPECT_TRUE(object.getListParameter("l")->getStructuredValues()->hasComponent("q"));
}

TEST_F(ManagedObjectTest, ChangeOfClassMovesTheObjectInTheIndex) {
  LibTarnManagedObjectImp& object =
      parsed("<managedObject class='C' distName='A-1'/><managedObject class='C' distName='A-2'/>");
  const LibTarnCmData& cmData = *documents_.back()->getLibTarnCmData();
  EXPECT_FALSE(cmData.getLibTarnManagedObjectsByClass("C").empty());
  EXPECT_TRUE(
      object.change(parsed("<managedObject class='#'/>"), parsed("<managedObject class='D'/>")));
  EXPECT_EQ(*cmData.getLibTarnManagedObjectsByClass("D").begin(), &object);
  EXPECT_EQ((*cmData.getLibTarnManagedObjectsByClass("C").begin())->getDistName(),
            DistinguishedName("A-2"));
  EXPECT_TRUE(
      object.change(parsed("<managedObject class='#'/>"), parsed("<managedObject class='#'/>")));
  EXPECT_STREQ(object.getClass(), "D");
}

TEST_F(ManagedObjectTest, ChangeToTheSameClassKeepsTheOrderOfTheClass) {
  LibTarnManagedObjectImp& object =
      parsed("<managedObject class='C' distName='A-1'/><managedObject class='C' distName='A-2'/>");
  const LibTarnCmData& cmData = *documents_.back()->getLibTarnCmData();
  EXPECT_FALSE(cmData.getLibTarnManagedObjectsByClass("C").empty());
  EXPECT_TRUE(object.change(parsed("<managedObject class='C'/>"),
                            parsed("<managedObject class='C' version='2' distName='_-_'/>")));
  EXPECT_STREQ(object.getVersion(), "2");
  EXPECT_EQ(*cmData.getLibTarnManagedObjectsByClass("C").begin(), &object);
}

TEST_F(ManagedObjectTest, ChangeWithItselfChangesAndLosesNothing) {
  LibTarnManagedObjectImp& object = parsed(
      "<managedObject class='C' distName='A-1/B-2'><p name='x'>1</p><list "
      "name='l'/></managedObject>");
  const std::string before = tarn_test::dump(object);
  EXPECT_TRUE(object.change(parsed("<managedObject class='#' distName='B-2'/>"), object));
  EXPECT_TRUE(object.change(object, object));
  EXPECT_EQ(tarn_test::dump(object), before);
  EXPECT_TRUE(object.hasScalarParameter("x") && object.hasListParameter("l"));
}

TEST_F(ManagedObjectTest, PatternNameThatIsNotFoundKeepsTheName) {
  LibTarnManagedObjectImp& object = parsed("<managedObject distName='A-1'/>");
  EXPECT_TRUE(object.change(parsed("<managedObject/>"), parsed("<managedObject distName='B-1'/>")));
  EXPECT_STREQ(object.getDistName().getText(), "A-1");
  EXPECT_EQ(documents_.front()->getLibTarnCmData()->getLibTarnManagedObject("A-1"), &object);
}

// copies

TEST_F(ManagedObjectTest, CopiesTakeWhatTheirClassCopies) {
  LibTarnManagedObjectImp& object = parsed(
      "<managedObject class='C' distName='A-1' operation='create' other='o'><p name='x' "
      "y='z'>1<log/>"
      "</p><list name='l' y='z'><item y='z'><p name='q'>2</p></item></list>"
      "<extension name='e' y='z'><p name='w'>3</p></extension><list y='z'/></managedObject>");
  const char* const expected =
      "managedObject(class=C distName=A-1 operation=create other=o){p(name=x y=z)\"1\" "
      "list(name=l){item{p(name=q)\"2\"}} extension(name=e){p(name=w)\"3\"} list}";
  for (const LibTarnManagedObjectImp* copy : {object.clone(factory()), object.clone()}) {
    EXPECT_EQ(tarn_test::dump(*copy), expected);
    EXPECT_TRUE(copy->getOperation() == Operation::CREATE);
    EXPECT_STREQ(copy->getScalarParameter("x")->getValue(), "1");
    EXPECT_TRUE(copy->getListParameter("l")->getStructuredValues()->hasComponent("q"));
    EXPECT_EQ(copy->parent(), nullptr);
  }
}

TEST_F(ManagedObjectTest, CopyIsIndependentOfItsSource) {
  LibTarnManagedObjectImp* copy =
      parsed("<managedObject class='C' distName='A-1'><p name='x'>1</p></managedObject>")
          .clone(factory());
  documents_.clear();
  EXPECT_EQ(tarn_test::dump(*copy), "managedObject(class=C distName=A-1){p(name=x)\"1\"}");
  EXPECT_STREQ(copy->getScalarParameter("x")->getValue(), "1");
}

TEST_F(ManagedObjectTest, FactoryCopiesAnObjectOfAnyDocument) {
  LibTarnManagedObjectImp& object = parsed(
      "<managedObject class='C' distName='A-1' operation='create'><p name='x'>1</p>"
      "<list name='l'><item><p name='q'/></item></list></managedObject>");
  LibTarnManagedObject* const copy = factory().createCopy(object);
  auto& element = dynamic_cast<LibTarnManagedObjectImp&>(*copy);
  EXPECT_EQ(tarn_test::dump(element), tarn_test::dump(object));
  EXPECT_EQ(element.getParent(), nullptr);
  EXPECT_EQ(element.getDomFactory()->getMemoryPool(), &factory().getMemoryPool());
  EXPECT_TRUE(copy->getOperation() == Operation::CREATE && copy->hasScalarParameter("x"));
  object.addParameter(*documents_.back()->getFactory().createScalar("y", "2"));
  EXPECT_FALSE(copy->hasScalarParameter("y"));
}

TEST_F(ManagedObjectTest, ChildrenAreCopiedIntoADetachedElementOfAnotherPool) {
  LibTarnManagedObjectImp& source = parsed(
      "<managedObject a='b'><list name='l'><item><p name='q'/></item></list></managedObject>");
  auto& target = dynamic_cast<LibTarnManagedObjectImp&>(*factory().allocateTarnManagedObjectNode());
  source.cloneAttributes(&target);
  source.cloneChildren(&target);
  EXPECT_EQ(tarn_test::dump(target), tarn_test::dump(source));
  target.rebuildIndexersAndInitializeEnum();
  EXPECT_TRUE(target.hasListParameter("l"));
  source.cloneChildren(&source);
  EXPECT_EQ(tarn_test::dump(source).find("item"), tarn_test::dump(target).find("item"));
}

TEST_F(ManagedObjectTest, PoolOfAHostServesAFactory) {
  class HostPool : public libDomXml::IMemoryPool {
   public:
    void* allocateMemory(unsigned int size) override {
      blocks_.emplace_back(new void*[size / sizeof(void*) + 1]);
      return blocks_.back().get();
    }

   private:
    std::vector<std::unique_ptr<void*[]>> blocks_;
  };
  HostPool pool;
  TarnFactory factoryOverPool(pool);
  LibTarnManagedObject* const object =
      factoryOverPool.createLibTarnManagedObject("C", "A-1", nullptr);
  EXPECT_EQ(object->addParameter(*factoryOverPool.createScalar("x", "1")), 0);
  LibTarnManagedObjectImp& source =
      parsed("<managedObject><p name='y'>2</p><list name='l'><item/></list></managedObject>");
  source.cloneChildren(dynamic_cast<TarnDomElement*>(object));
  EXPECT_EQ(
      tarn_test::dump(dynamic_cast<LibTarnManagedObjectImp&>(*object)),
      "managedObject(class=C distName=A-1){p(name=x)\"1\" p(name=y)\"2\" list(name=l){item}}");
  EXPECT_EQ(tarn_test::dump(*source.clone(factoryOverPool)), tarn_test::dump(source));
}

// More parameters than an array holds after a change.
TEST_F(ManagedObjectTest, ManyParsedParametersAreRemovedOneByOne) {
  constexpr int COUNT = 150;
  std::string text = "<managedObject>";
  for (int i = 0; i < COUNT; ++i) text += "<p name='" + std::to_string(i) + "'/>";
  LibTarnManagedObjectImp& object = parsed(text + "</managedObject>");
  std::set<std::string> left;
  for (int i = 0; i < COUNT; ++i) left.insert(std::to_string(i));
  for (int i = 0; i < COUNT; ++i) {
    const std::string name = std::to_string(i * 77 % COUNT);
    ASSERT_EQ(object.removeScalarParameter(name), 0);
    ASSERT_EQ(object.removeScalarParameter(name), 2);
    left.erase(name);
    ASSERT_FALSE(object.hasScalarParameter(name));
    ASSERT_EQ(namesOf(object.getScalarParameters()), Names(left.begin(), left.end()));
  }
  EXPECT_EQ(object.getFirstChildElement("p"), nullptr);
}

TEST_F(ManagedObjectTest, ClassOfAnObjectThatIsInNoDocumentChanges) {
  LibTarnManagedObjectImp& object = own();
  EXPECT_TRUE(object.change(parsed("<managedObject class='#' version='#' distName='_-_'/>"),
                            parsed("<managedObject class='D' version='#' distName='_-_'/>")));
  EXPECT_STREQ(object.getClass(), "D");
}

TEST_F(ManagedObjectTest, ForbiddenCopiesAreLoggedAndGiveNothing) {
  libDomXml::IDomDocument* const dom = document_.getItsTarnDomDocument();
  EXPECT_EQ(own().clone(dom), nullptr);
  EXPECT_EQ(dynamic_cast<ScalarImp&>(scalar("x")).clone(dom), nullptr);
  EXPECT_EQ(dynamic_cast<ListImp&>(*factory().createList("x")).clone(dom), nullptr);
  EXPECT_EQ(dynamic_cast<StructureImp&>(*factory().createStructure()).clone(dom), nullptr);
  EXPECT_EQ(dynamic_cast<LibTarnExtensionImp&>(*factory().createLibTarnExtension("x")).clone(dom),
            nullptr);
  EXPECT_EQ(log_.messages("ERROR"),
            (Names{"LibTarnManagedObjectImp::clone(IDomDocument* document) shouldn't be called!",
                   "ScalarImp::clone(IDomDocument* document) shouldn't be called!",
                   "ListImp::clone(IDomDocument* document) shouldn't be called!",
                   "StructureImp::clone(IDomDocument* document) shouldn't be called!",
                   "LibTarnExtensionImp::clone(IDomDocument* document) shouldn't be called!"}));
  for (const CapturedLog::Line& line : log_.lines()) EXPECT_EQ(line.function, "clone");
}

TEST_F(ManagedObjectTest, CopyOfAnObjectWithDuplicatesIsRefused) {
  LibTarnManagedObjectImp& object = own();
  object.addChild(&dynamic_cast<ScalarImp&>(scalar("x")));
  object.addChild(&dynamic_cast<ScalarImp&>(scalar("x")));
  try {
    object.clone();
    ADD_FAILURE();
  } catch (const exceptions::DuplicateElementException& error) {
    EXPECT_STREQ(error.what(), "The 'A-1' element already contains a 'p' element with 'name=x'");
  }
}

TEST_F(ManagedObjectTest, ElementsOfOtherDocumentsAreNotLinked) {
  LibTarnDocument other;
  const char* const text = "domFactory_.getMemoryPool\\(\\) == newDomElement";
  LibTarnManagedObjectImp& object = own();
  EXPECT_DEATH(object.addParameter(*other.getFactory().createScalar("x", nullptr)), text);
  EXPECT_DEATH(object.addParameter(*other.getFactory().createList("x")), text);
  EXPECT_DEATH(object.addParameter(*other.getFactory().createLibTarnExtension("x")), text);
  Scalar& linked = scalar("x");
  EXPECT_EQ(object.addParameter(linked), 0);
  EXPECT_DEATH(own().addParameter(linked), "child && !child->parent");
}

}  // namespace
