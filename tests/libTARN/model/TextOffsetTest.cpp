// The place of an element in the text that it was parsed from.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"

namespace {

using namespace libtarn::model;
using libtarn::util::NO_OFFSET;

const std::string TEXT =
    "\xEF\xBB\xBF<?xml version='1.0'?>\n<tarn xmlns='tarn21.xsd' version='2.1'>\n<cmData "
    "type='plan'>\n"
    "<header/><managedObject class='A' distName='A-1'><p name='x'>&lt;&lt;&lt;</p>\n"
    "<managedObject class='B' distName='B-1'/><p name='y'>1</p></managedObject></cmData></tarn>";

std::vector<char> vectorOf(const std::string& text) {
  return {text.c_str(), text.c_str() + text.size() + 1};
}

void expectOffsetsOfText(const LibTarnDocument& document) {
  LibTarnCmData& cmData = *document.getLibTarnCmData();
  const LibTarnManagedObject& object = *cmData.getLibTarnManagedObject("A-1");
  EXPECT_EQ(document.getTextOffset(*document.getItsTarnDomDocument()->getRootElement()),
            TEXT.find("<tarn"));
  EXPECT_EQ(document.getTextOffset(cmData), TEXT.find("<cmData"));
  EXPECT_EQ(document.getTextOffset(*cmData.getLibTarnHeader()), TEXT.find("<header"));
  EXPECT_EQ(document.getTextOffset(object), TEXT.find("<managedObject"));
  EXPECT_EQ(document.getTextOffset(*object.getScalarParameter("y")), TEXT.find("<p name='y'"));
}

TEST(TextOffsetTest, ParsedElementHasThePlaceOfItsStartTag) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse(TEXT.c_str(), true), ParseResult::Done);
  expectOffsetsOfText(document);
  LibTarnDocument ofVector;
  ASSERT_EQ(ofVector.parse(vectorOf(TEXT), true), ParseResult::Done);
  expectOffsetsOfText(ofVector);
  const auto place = libtarn::util::locate(
      TEXT.c_str(), ofVector.getTextOffset(*ofVector.getLibTarnCmData()->getLibTarnHeader()));
  EXPECT_EQ(place.line, 4U);
  EXPECT_EQ(place.column, 1U);
}

TEST(TextOffsetTest, EditsOfAnElementLeaveItsPlace) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse(TEXT.c_str(), true), ParseResult::Done);
  LibTarnManagedObject& object = *document.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  ASSERT_EQ(object.setDistName("A-2"), EditResult::Done);
  EXPECT_EQ(document.getTextOffset(object), TEXT.find("<managedObject"));
  dynamic_cast<LibTarnManagedObjectImp&>(object).setTagName("managedObject");
  EXPECT_EQ(document.getTextOffset(object), NO_OFFSET);
}

TEST(TextOffsetTest, ElementThatIsNotFromTheTextHasNone) {
  LibTarnDocument document;
  EXPECT_EQ(document.getTextOffset(*document.getItsTarnDomDocument()->getRootElement()), NO_OFFSET);
  ASSERT_EQ(document.parse(TEXT.c_str(), true), ParseResult::Done);
  EXPECT_EQ(document.getTextOffset(*document.getFactory().createScalar("p", "1")), NO_OFFSET);
  const auto* const object = document.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  LibTarnDocument other;
  EXPECT_EQ(other.getTextOffset(*object), NO_OFFSET);
  ASSERT_EQ(other.parse(TEXT.c_str(), true), ParseResult::Done);
  EXPECT_EQ(other.getTextOffset(*object), NO_OFFSET);
}

TEST(TextOffsetTest, ElementOfAnEarlierTextHasNone) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse(TEXT.c_str(), true), ParseResult::Done);
  const auto* const earlier = document.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  ASSERT_EQ(document.parse(("  " + TEXT.substr(3)).c_str(), true), ParseResult::Done);
  EXPECT_EQ(document.getTextOffset(*earlier), NO_OFFSET);
  EXPECT_EQ(document.getTextOffset(*document.getLibTarnCmData()), TEXT.find("<cmData") - 1);
}

}  // namespace
