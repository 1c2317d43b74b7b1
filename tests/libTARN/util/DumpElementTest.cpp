#include <gtest/gtest.h>

#include <string>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"

namespace {

using namespace libtarn::model;
using libtarn::util::dumpElement;
using libtarn::util::dumpTarnDocument;

class DumpElementTest : public ::testing::Test {
 protected:
  DumpElementTest() {
    EXPECT_EQ(document_.parse("<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'><header>"
                              "<log dateTime='now' action='a'>x &amp; y</log></header>"
                              "<managedObject class='A' distName='A-1'><p name='p'>1</p>"
                              "<list name='l'><item><p name='q'>&lt;</p></item></list>"
                              "<extension name='e'><p name='r'/></extension></managedObject>"
                              "</cmData></tarn>",
                              true),
              0);
    dumpTarnDocument(document_, printed_);
  }

  static std::string dumped(const IElement& element) {
    std::string out = "replaced";
    dumpElement(element, out);
    return out;
  }

  // Expects that `element` is printed as lines that the printed document has exactly once.
  void expectLinesOfDocument(const IElement& element, const std::string& firstLine) {
    const std::string text = dumped(element);
    EXPECT_EQ(text.substr(0, text.find('\n')), firstLine);
    EXPECT_EQ(text.back(), '\n');
    const std::size_t place = printed_.find("\n" + text);
    ASSERT_NE(place, std::string::npos) << text;
    EXPECT_EQ(printed_.find("\n" + text, place + 1), std::string::npos);
  }

  LibTarnDocument document_;
  std::string printed_;
};

TEST_F(DumpElementTest, ElementIsPrintedAsTheDocumentPrintsIt) {
  LibTarnCmData& cmData = *document_.getLibTarnCmData();
  LibTarnManagedObject& object = *cmData.getLibTarnManagedObject("A-1");
  expectLinesOfDocument(cmData, " <cmData type=\"plan\">");
  expectLinesOfDocument(*cmData.getLibTarnHeader(), "  <header>");
  expectLinesOfDocument(object, "  <managedObject class=\"A\" distName=\"A-1\">");
  expectLinesOfDocument(*object.getScalarParameter("p"), "   <p name=\"p\">1</p>");
  expectLinesOfDocument(*object.getListParameter("l"), "   <list name=\"l\">");
  expectLinesOfDocument(*object.getExtension("e")->getParameter("r"), "    <p name=\"r\"></p>");
  const auto* const root = document_.getItsTarnDomDocument()->getRootElement();
  EXPECT_EQ(printed_.substr(printed_.find('\n') + 1), dumped(*root));
}

TEST_F(DumpElementTest, DetachedElementIsNotIndented) {
  Scalar& scalar = *document_.getFactory().createScalar("p", "<");
  EXPECT_EQ(dumped(scalar), "<p name=\"p\">&lt;</p>\n");
  LibTarnManagedObject& object = *document_.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  Scalar& removed = *object.getScalarParameter("p");
  object.removeScalarParameter("p");
  EXPECT_EQ(dumped(removed), "<p name=\"p\">1</p>\n");
}

TEST_F(DumpElementTest, IndentationIsOfTheDepthThatIsAskedFor) {
  LibTarnManagedObject& object = *document_.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  const Scalar& scalar = *object.getScalarParameter("p");
  const Scalar& detached = *document_.getFactory().createScalar("p", "1");
  for (const unsigned int depth : {0U, 1U, 5U}) {
    for (const Scalar* each : {&scalar, &detached}) {
      std::string out = "replaced";
      dumpElement(*each, out, depth);
      EXPECT_EQ(out, std::string(depth, ' ') + "<p name=\"p\">1</p>\n");
    }
  }
  std::string asInDocument;
  dumpElement(object, asInDocument, 2);
  EXPECT_EQ(asInDocument, dumped(object));
}

TEST_F(DumpElementTest, ElementOfAnotherImplementationIsAnAssertion) {
  class Foreign : public IElement {
    IElement* getNextSiblingElement() const override { return nullptr; }
    IElement* getFirstChildElement(const char* /*name*/) const override { return nullptr; }
    void removeThisElement() override {}
  };
  std::string out;
  EXPECT_DEATH(dumpElement(Foreign(), out), "element of this library");
}

}  // namespace
