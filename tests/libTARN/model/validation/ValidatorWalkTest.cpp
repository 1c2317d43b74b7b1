// The order of the walk, and the rules called one by one.

#include <gtest/gtest.h>

#include <exception>
#include <string>
#include <typeinfo>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentDeclaration.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/exceptions/InvalidAttributeValueException.hpp"
#include "libtarn/model/exceptions/InvalidChildCountException.hpp"
#include "libtarn/model/exceptions/InvalidDistinguishedNameException.hpp"
#include "libtarn/model/exceptions/NoElementValueException.hpp"
#include "libtarn/model/exceptions/NoSuchAttributeException.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "support/CapturedLog.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using tarn_test::CapturedLog;
using tarn_test::cmDataText;

/// The message of an exception of exactly that class, or a text that says what happened instead.
template <class Exception, class Call>
std::string thrown(const Call& call) {
  try {
    call();
  } catch (const Exception& error) {
    return typeid(error) == typeid(Exception) ? error.what() : "a class derived from it";
  } catch (const std::exception& error) {
    return std::string("another exception: ") + error.what();
  }
  return "nothing";
}

class ValidatorWalkTest : public ::testing::Test {
 protected:
  /// Parses without validation; `cmData` is the content of the one cmData element.
  void load(const std::string& cmData, const std::string& type = "plan") {
    const std::string text = cmDataText(cmData, type);
    ASSERT_EQ(document_.parse(text.c_str(), false), 0) << text;
  }
  void loadObject(const std::string& body) {
    load("<header/><managedObject class='C' distName='A-1'>" + body + "</managedObject>");
  }
  LibTarnDocumentInternal& root() { return *document_.getItsTarnDomDocument()->getRootElement(); }
  LibTarnCmDataImp& cmData() {
    return dynamic_cast<LibTarnCmDataImp&>(*document_.getLibTarnCmData());
  }
  LibTarnManagedObjectImp& object() {
    return dynamic_cast<LibTarnManagedObjectImp&>(*cmData().getLibTarnManagedObject("A-1"));
  }
  /// The message of the walk from the root, and the path after it.
  std::string walk() {
    return thrown<exceptions::NoSuchAttributeException>([&] { root().accept(validator_); });
  }

  CapturedLog log_;
  LibTarnDocument document_;
  validation::Validator validator_;
};

// The walk

TEST_F(ValidatorWalkTest, WalkWithoutViolationLeavesAnEmptyPath) {
  loadObject("<p name='a'/><list name='l'><item><p name='b'/></item></list><extension name='e'/>");
  root().accept(validator_);
  EXPECT_EQ(validator_.getPath(), "");
}

TEST_F(ValidatorWalkTest, ViolationLeavesThePathWhereItWas) {
  loadObject("<list name='l'><item><p/></item></list>");
  EXPECT_EQ(walk(),
            "The 'tarn > cmData > managedObject:A-1 > list:l > item > p > ' element has no "
            "attribute 'name'");
  EXPECT_EQ(validator_.getPath(), "tarn > cmData > managedObject:A-1 > list:l > item > p > ");
}

TEST_F(ValidatorWalkTest, ChildrenAreVisitedInTheOrderOfTheirKindsAndNames) {
  loadObject(
      "<extension name='z'><p/></extension><extension name='a'><p/></extension>"
      "<list name='m'><item><p/></item></list><list name='k'><item><p/></item></list>");
  EXPECT_EQ(walk(),
            "The 'tarn > cmData > managedObject:A-1 > list:k > item > p > ' element has no "
            "attribute 'name'");
  loadObject("<extension name='z'><p/></extension><extension name='a'><p/></extension>");
  validator_ = validation::Validator();
  EXPECT_EQ(walk(),
            "The 'tarn > cmData > managedObject:A-1 > extension:z > p > ' element has no "
            "attribute 'name'");
}

TEST_F(ValidatorWalkTest, RulesOfAnElementComeBeforeThoseOfItsChildren) {
  load("<header/><managedObject distName='A-1'><list/></managedObject>");
  EXPECT_EQ(walk(), "The 'tarn > cmData > managedObject:A-1 > ' element has no attribute 'class'");
}

TEST_F(ValidatorWalkTest, HeaderCountComesBeforeThatOfTheObjects) {
  load("");
  EXPECT_EQ(thrown<exceptions::InvalidChildCountException>([&] { root().accept(validator_); }),
            "The 'tarn > cmData > ' element has 0 child 'header' elements.  Expected: 1");
}

TEST_F(ValidatorWalkTest, EachListItemAndExtensionDecidesAnewWhetherNamesAreNeeded) {
  // The values of the second list need no names although the item before it did.
  loadObject("<list name='a'><item><p name='x'/></item></list><list name='b'><p/><p/></list>");
  root().accept(validator_);
  // The value of the extension does although those of the list before it did not.
  loadObject("<list name='a'><p/></list><extension name='e'><p/></extension>");
  EXPECT_EQ(walk(),
            "The 'tarn > cmData > managedObject:A-1 > extension:e > p > ' element has no "
            "attribute 'name'");
}

TEST_F(ValidatorWalkTest, NextObjectNeedsNamesAgain) {
  load(
      "<header/><managedObject class='C' distName='A-1'><list name='l'><p/></list></managedObject>"
      "<managedObject class='C' distName='A-2'><p/></managedObject>");
  EXPECT_EQ(walk(),
            "The 'tarn > cmData > managedObject:A-2 > p > ' element has no attribute 'name'");
}

TEST_F(ValidatorWalkTest, DeclarationIsOnThePathAndHasNoRules) {
  const auto& declaration = dynamic_cast<const LibTarnDocumentDeclaration&>(
      *document_.getItsTarnDomDocument()->getDocumentDeclaration());
  declaration.updatePath(validator_);
  EXPECT_EQ(validator_.getPath(), "xml > ");
  declaration.accept(validator_);
  EXPECT_EQ(validator_.getPath(), "xml > ");
}

// Rules one by one

TEST_F(ValidatorWalkTest, HeadersAreCountedToOneMoreThanAllowed) {
  const struct {
    std::size_t headers;
    std::size_t min;
    std::size_t max;
    const char* message;
  } cases[] = {
      {0, 0, 0, "nothing"},
      {0, 1, 1, "The '' element has 0 child 'header' elements.  Expected: 1"},
      {1, 1, 1, "nothing"},
      {2, 1, 1, "The '' element has 2 child 'header' elements.  Expected: 1"},
      {5, 1, 1, "The '' element has 2 child 'header' elements.  Expected: 1"},
      {2, 0, 2, "nothing"},
      {3, 0, 2, "The '' element has 3 child 'header' elements.  Expected: [0, 2]"},
      {5, 0, 2, "The '' element has 3 child 'header' elements.  Expected: [0, 2]"},
      {1, 2, 4, "The '' element has 1 child 'header' elements.  Expected: [2, 4]"},
      {1, 0, 0, "The '' element has 1 child 'header' elements.  Expected: 0"},
  };
  for (const auto& c : cases) {
    std::string headers;
    for (std::size_t i = 0; i < c.headers; ++i) headers += "<header/>";
    load(headers);
    EXPECT_EQ(thrown<exceptions::InvalidChildCountException>(
                  [&] { validator_.validateChildCount<LibTarnHeaderImp>(cmData(), c.min, c.max); }),
              c.message)
        << c.headers << " headers, " << c.min << " to " << c.max;
  }
  EXPECT_DEATH(validator_.validateChildCount<LibTarnHeaderImp>(cmData(), 2, 1),
               "assertion failed: minCount <= maxCount");
}

TEST_F(ValidatorWalkTest, OneObjectIsEnoughAndManyAreToo) {
  const auto missing = [&] {
    return thrown<exceptions::InvalidChildCountException>(
        [&] { validator_.validateAtLeastOneChild<LibTarnManagedObjectImp>(cmData()); });
  };
  load("<header/>");
  EXPECT_EQ(missing(), "The '' element has 0 child 'managedObject' elements.  Expected: 1");
  load("<header/><managedObject distName='A-1'/>");
  EXPECT_EQ(missing(), "nothing");
  load("<managedObject distName='A-1'/><managedObject distName='A-2'/>");
  EXPECT_EQ(missing(), "nothing");
}

TEST_F(ValidatorWalkTest, AttributesAreComparedByteForByte) {
  loadObject("");
  validator_.appendToPath("x", "y");
  const auto check = [&](const char* name, const char* expected) {
    return thrown<exceptions::InvalidAttributeValueException>(
        [&] { validator_.validateAttribute(object(), name, expected); });
  };
  EXPECT_EQ(check("class", nullptr), "nothing");
  EXPECT_EQ(check("class", "C"), "nothing");
  EXPECT_EQ(check("class", "c"), "'C' is not a valid value of 'x:y > ' attribute 'class'");
  EXPECT_EQ(check("class", ""), "'C' is not a valid value of 'x:y > ' attribute 'class'");
  EXPECT_EQ(check("class", "CD"), "'C' is not a valid value of 'x:y > ' attribute 'class'");
  EXPECT_EQ(thrown<exceptions::NoSuchAttributeException>(
                [&] { validator_.validateAttribute(object(), "Class", "C"); }),
            "The 'x:y > ' element has no attribute 'Class'");
}

TEST_F(ValidatorWalkTest, EmptyTextIsATextAndADocumentHasNone) {
  loadObject("");
  validator_.appendToPath("x", nullptr);
  validator_.validateValue(object());
  EXPECT_EQ(thrown<exceptions::NoElementValueException>(
                [&] { validator_.validateValue(*document_.getItsTarnDomDocument()); }),
            "The 'x > ' element has no value");
}

TEST_F(ValidatorWalkTest, DistinguishedNameIsJudgedByTheObjectsOwnValidator) {
  loadObject("");
  validator_.validateDistinguishedName(object());
  LibTarnManagedObjectImp& judged = object();
  judged.setAttribute("distName", "A");
  EXPECT_EQ(thrown<exceptions::InvalidDistinguishedNameException>(
                [&] { validator_.validateDistinguishedName(judged); }),
            "Invalid distinguished name: 'A'");
  judged.removeAttribute("distName");
  EXPECT_EQ(thrown<exceptions::NoSuchAttributeException>(
                [&] { validator_.validateDistinguishedName(judged); }),
            "The '' element has no attribute 'distName'");
}

TEST_F(ValidatorWalkTest, ListOfBothKindsThrowsTheBaseException) {
  loadObject("<list name='a'><p/><item/></list><list name='b'><item/></list><list name='c'/>");
  const auto check = [&](const char* name) {
    return thrown<exceptions::ModelException>([&] {
      validator_.validateChildrenType(dynamic_cast<ListImp&>(*object().getListParameter(name)));
    });
  };
  EXPECT_EQ(check("a"), "The '' has both 'p' and 'item' children");
  EXPECT_EQ(check("b"), "nothing");
  EXPECT_EQ(check("c"), "nothing");
}

TEST_F(ValidatorWalkTest, OnlyAPlanNeedsAnObject) {
  for (const char* const type : {"actual", "defaults"}) {
    load("<header/>", type);
    root().accept(validator_);
  }
  load("<header/>", "plan");
  EXPECT_EQ(thrown<exceptions::InvalidChildCountException>([&] { root().accept(validator_); }),
            "The 'tarn > cmData > ' element has 0 child 'managedObject' elements.  Expected: 1");
}

}  // namespace
