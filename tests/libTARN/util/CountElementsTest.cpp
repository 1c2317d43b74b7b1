#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "libtarn/libtarn.hpp"
#include "support/CapturedLog.hpp"
#include "support/SmallStack.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using libtarn::util::countElements;
using libtarn::util::ElementCounts;
using tarn_test::documentText;
using tarn_test::loaded;
using tarn_test::rootText;

void expectCounts(const LibTarnDocument& document, std::size_t elements, std::size_t parameters,
                  std::size_t depth) {
  const ElementCounts counts = countElements(document);
  EXPECT_EQ(counts.elements, elements);
  EXPECT_EQ(counts.parameters, parameters);
  EXPECT_EQ(counts.depth, depth);
}

TEST(CountElementsTest, EachElementCountsAndParametersAreThoseWithAName) {
  expectCounts(LibTarnDocument(), 1, 0, 1);
  expectCounts(*loaded(documentText("")), 3, 0, 3);
  expectCounts(*loaded(documentText("<managedObject distName='A-1'><p name='a'/><p/>"
                                    "<list name='l'><p>1</p><p name='x'>2</p></list>"
                                    "<list name='m'><item><p name='c'/></item></list>"
                                    "<extension name='e'><p name='q'/></extension></managedObject>"
                                    "<managedObject distName='A-2'/>")),
               15, 6, 6);
  // Elements with abbreviated tags are no parameters.
  expectCounts(*loaded(documentText("<managedObject><li name='l'/></managedObject>")), 5, 0, 4);
}

TEST(CountElementsTest, CountsFollowEdits) {
  const auto document = loaded(documentText("<managedObject distName='A-1'/>"));
  LibTarnManagedObject& object = *document->getLibTarnCmData()->getLibTarnManagedObject("A-1");
  Scalar& scalar = *document->getFactory().createScalar("p", "1");
  expectCounts(*document, 4, 0, 3);
  object.addParameter(scalar);
  expectCounts(*document, 5, 1, 4);
  object.removeThisElement();
  expectCounts(*document, 3, 0, 3);
}

TEST(CountElementsTest, DeepDocumentNeedsNoStack) {
  constexpr std::size_t DEPTH = 200000;
  std::string text;
  for (std::size_t i = 0; i < DEPTH; ++i) text += "<item>";
  text += "<i/>";
  for (std::size_t i = 0; i < DEPTH; ++i) text += "</item>";
  const auto document = loaded(rootText(text));
  ElementCounts counts;
  bool isAbbreviated = false;
  tarn_test::runOnSmallStack([&] {
    counts = countElements(*document);
    isAbbreviated = document->hasAbbreviatedTags();
  });
  EXPECT_EQ(counts.elements, DEPTH + 2);
  EXPECT_EQ(counts.depth, DEPTH + 2);
  EXPECT_TRUE(isAbbreviated);
}

TEST(AbbreviatedTagsTest, EveryTagBelowTheRootIsLookedAt) {
  const struct {
    const char* name;
    std::string text;
    bool isAbbreviated;
  } cases[] = {
      {"whole tags",
       documentText("<managedObject distName='A-1'><p name='a'/><list name='l'><item/></list>"
                    "<extension name='e'/></managedObject>",
                    "<header><log/></header>"),
       false},
      {"root", "<t/>", false},
      {"body", "<tarn><cm type='plan'/></tarn>", true},
      {"header", documentText("", "<head/>"), true},
      {"log", documentText("", "<header><l/></header>"), true},
      {"object", documentText("<managedObjec/>"), true},
      {"list", documentText("<managedObject><li/></managedObject>"), true},
      {"item", documentText("<managedObject><list><it/></list></managedObject>"), true},
      {"extension", documentText("<managedObject><e/></managedObject>"), true},
      {"first of two", documentText("<manag/><managedObject distName='A-1'/>"), true},
      {"last of two", documentText("<managedObject distName='A-1'/><manag/>"), true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(loaded(c.text)->hasAbbreviatedTags(), c.isAbbreviated);
  }
  EXPECT_FALSE(LibTarnDocument().hasAbbreviatedTags());
}

TEST(AbbreviatedTagsTest, CopyHasTheWholeTag) {
  const auto delta = loaded(
      documentText("<managedObject distName='A-1' class='C'><li name='l'/></managedObject>"));
  const auto source = loaded(documentText(""));
  EXPECT_TRUE(libtarn::editor::TarnMerge(*source).mergeDocument(*delta));
  EXPECT_TRUE(delta->hasAbbreviatedTags());
  EXPECT_FALSE(source->hasAbbreviatedTags());
}

}  // namespace
