#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/Diagnostic.hpp"
#include "support/CapturedLog.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using tarn_test::CapturedLog;
using tarn_test::documentText;
using tarn_test::vectorOf;

constexpr const char* GOOD =
    "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'><header/>"
    "<managedObject class='B' distName='A-1'/></cmData></tarn>";

void expectDiagnostic(const LibTarnDocument& document, int code, const std::string& message,
                      std::size_t offset) {
  EXPECT_EQ(document.getDiagnostic().code, code);
  EXPECT_EQ(document.getDiagnostic().message, message);
  EXPECT_EQ(document.getDiagnostic().offset, offset);
}

TEST(DiagnosticTest, NewDocumentHasNone) { expectDiagnostic(LibTarnDocument(), 0, "", 0); }

TEST(DiagnosticTest, MalformedTextGivesMessageAndByteOffset) {
  const struct {
    std::string text;
    const char* message;
    std::size_t offset;
  } cases[] = {
      {"<", "expected element name", 1},
      {"<tarn", "expected >", 5},
      {"<tarn><foo/></tarn>", "unknown TARN object", 10},
      {"\xEF\xBB\xBF<foo/>", "unknown TARN object", 7},
      // References are expanded in place; the offset is that in the unchanged text.
      {"<tarn a='&lt;&lt;&lt;'><p>&#10;&#10;</p><foo/></tarn>", "unknown TARN object", 44},
  };
  for (const auto& c : cases) {
    CapturedLog log;
    LibTarnDocument fromText;
    EXPECT_EQ(fromText.parse(c.text.c_str(), true), 1);
    expectDiagnostic(fromText, 1, c.message, c.offset);
    LibTarnDocument fromVector;
    EXPECT_EQ(fromVector.parse(vectorOf(c.text), false), 1);
    expectDiagnostic(fromVector, 1, c.message, c.offset);
    const std::string line = std::string("Parsing failed: ") + c.message;
    EXPECT_EQ(log.messages("ERROR"), (std::vector<std::string>{line, line}));
  }
}

TEST(DiagnosticTest, VectorWithoutATerminatingNulFailsAtItsEnd) {
  CapturedLog log;
  LibTarnDocument document;
  EXPECT_EQ(document.parse(std::vector<char>(GOOD, GOOD + std::strlen(GOOD)), false), 1);
  expectDiagnostic(document, 1, "unexpected end of data", std::strlen(GOOD));
  EXPECT_EQ(document.parse(std::vector<char>(), false), 1);
  expectDiagnostic(document, 1, "unexpected end of data", 0);
}

TEST(DiagnosticTest, BrokenRuleGivesMessageWithoutOffset) {
  CapturedLog log;
  LibTarnDocument document;
  EXPECT_EQ(document.parse("<tarn version='1'/>", true), 2);
  expectDiagnostic(document, 2, "The 'tarn > ' element has no attribute 'xmlns'", 0);
  LibTarnDocument other;
  EXPECT_EQ(other.parse("<tarn><cmData/></tarn>", false), 2);
  expectDiagnostic(other, 2, "The 'cmData' element has no attribute 'type'", 0);
}

TEST(DiagnosticTest, NextParseReplacesIt) {
  CapturedLog log;
  LibTarnDocument document;
  EXPECT_EQ(document.parse("<tarn", false), 1);
  EXPECT_EQ(document.parse(GOOD, true), 0);
  expectDiagnostic(document, 0, "", 0);
  // The offset is that in the second text.
  EXPECT_EQ(document.parse("  <", false), 1);
  expectDiagnostic(document, 1, "expected element name", 3);
}

TEST(DiagnosticTest, ValidateChecksTheDocumentAsItIsNow) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse(GOOD, true), 0);
  CapturedLog log;
  EXPECT_EQ(document.validate(), 0);
  expectDiagnostic(document, 0, "", 0);
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_EQ(log.lines()[0].level, "INFO");
  EXPECT_EQ(log.lines()[0].function, "validate");
  EXPECT_EQ(log.lines()[0].message, "Validation successful");

  log.clear();
  ASSERT_EQ(document.getLibTarnCmData()->removeLibTarnManagedObject("A-1"), 0);
  EXPECT_EQ(document.validate(), 2);
  const std::string message =
      "The 'tarn > cmData > ' element has 0 child 'managedObject' elements.  Expected: 1";
  expectDiagnostic(document, 2, message, 0);
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_EQ(log.lines()[0].level, "ERROR");
  EXPECT_EQ(log.lines()[0].function, "validate");
  EXPECT_EQ(log.lines()[0].message, "Validation failed: " + message);

  document.getLibTarnCmData()->addLibTarnManagedObject(
      *document.getFactory().createLibTarnManagedObject("B", "A-2", nullptr));
  EXPECT_EQ(document.validate(), 0);
  expectDiagnostic(document, 0, "", 0);
}

// The objects of the index count, whatever a host did to the tree.
TEST(DiagnosticTest, ValidateVisitsTheIndexedObjectsInTheOrderOfTheirNames) {
  CapturedLog log;
  LibTarnDocument document;
  ASSERT_EQ(
      document.parse(documentText("<managedObject distName='B-1'/><managedObject distName='A-1'/>"
                                  "<managedObject class='C' distName='C-1'/>")
                         .c_str(),
                     false),
      0);
  LibTarnCmData& cmData = *document.getLibTarnCmData();
  const std::string first =
      "The 'tarn > cmData > managedObject:A-1 > ' element has no attribute 'class'";
  EXPECT_EQ(document.validate(), 2);
  expectDiagnostic(document, 2, first, 0);

  cmData.getLibTarnManagedObject("B-1")->removeThisElement();
  cmData.getLibTarnManagedObject("A-1")->removeThisElement();
  EXPECT_EQ(document.validate(), 2);
  expectDiagnostic(document, 2, first, 0);

  cmData.removeLibTarnManagedObject("A-1");
  cmData.removeLibTarnManagedObject("B-1");
  EXPECT_EQ(document.validate(), 0);
  dynamic_cast<TarnDomElement&>(cmData).addChild(
      document.getFactory().allocateTarnManagedObjectNode());
  EXPECT_EQ(document.validate(), 0);
}

TEST(DiagnosticTest, ValidateVisitsAnIndexedObjectOfAnotherTag) {
  CapturedLog log;
  LibTarnDocument document;
  ASSERT_EQ(document.parse("<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='actual'><header/>"
                           "<managedObject class='C' distName='A-1'/></cmData></tarn>",
                           true),
            0);
  auto* const object =
      dynamic_cast<TarnDomElement*>(document.getLibTarnCmData()->getLibTarnManagedObject("A-1"));
  object->removeAttribute("class");
  object->setTagName("x");
  EXPECT_EQ(document.validate(), 2);
  expectDiagnostic(document, 2,
                   "The 'tarn > cmData > managedObject:A-1 > ' element has no attribute 'class'",
                   0);
}

TEST(DiagnosticTest, ValidateOfDocumentWithoutCmDataFails) {
  CapturedLog log;
  LibTarnDocument document;
  EXPECT_EQ(document.validate(), 2);
  expectDiagnostic(document, 2, "The 'tarn > ' element has 0 child 'cmData' elements.  Expected: 1",
                   0);
}

TEST(DiagnosticTest, PrintThatThrowsChangesNothing) {
  CapturedLog log;
  log.throwFromPrint();
  LibTarnDocument document;
  EXPECT_EQ(document.parse("<tarn", false), 1);
  expectDiagnostic(document, 1, "expected >", 5);
  EXPECT_EQ(document.parse(GOOD, true), 0);
  EXPECT_EQ(document.validate(), 0);
}

}  // namespace
