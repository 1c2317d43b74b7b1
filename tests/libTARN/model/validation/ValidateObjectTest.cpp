// The rules of one managed object, with the paths that a document gives them.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "support/CapturedLog.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using libtarn::model::validation::validateObject;
using libtarn::model::validation::Violation;
using tarn_test::CapturedLog;
using tarn_test::documentText;
using tarn_test::loaded;

using Strings = std::vector<std::string>;

Strings linesOf(const std::vector<Violation>& violations) {
  Strings lines;
  for (const Violation& each : violations) lines.push_back(each.path + "| " + each.message);
  return lines;
}

constexpr const char* BROKEN =
    "<managedObject distName='A'><p/><list><p/><item><p/></item></list>"
    "<extension name='e'><p/></extension></managedObject>";

TEST(ValidateObjectTest, ValidObjectHasNoViolations) {
  const auto document = loaded(documentText("<managedObject class='C' distName='A-1'/>", ""));
  std::vector<Violation> violations(1);
  std::size_t count = 9;
  EXPECT_EQ(validateObject(*document->getLibTarnCmData()->getLibTarnManagedObject("A-1"),
                           &violations, 5, 5, &count),
            ParseResult::Done);
  EXPECT_TRUE(violations.empty());
  EXPECT_EQ(count, 0U);
}

TEST(ValidateObjectTest, ViolationsAreThoseThatTheDocumentFinds) {
  const auto document = loaded(documentText(BROKEN));
  std::vector<Violation> ofDocument;
  EXPECT_EQ(document->validate(&ofDocument), ParseResult::BrokenRule);
  CapturedLog log;
  std::vector<Violation> ofObject;
  std::size_t count = 0;
  const LibTarnManagedObject& object = *document->getLibTarnCmData()->getLibTarnManagedObject("A");
  EXPECT_EQ(validateObject(object, &ofObject, ofDocument.size(), 1U << 20U, &count),
            ParseResult::BrokenRule);
  EXPECT_EQ(linesOf(ofObject), linesOf(ofDocument));
  EXPECT_EQ(count, ofDocument.size());
  EXPECT_EQ(count, 7U);
  EXPECT_EQ(linesOf(ofObject).front(),
            "tarn > cmData > managedObject:A > | The 'tarn > cmData > managedObject:A > ' element "
            "has no attribute 'class'");
  EXPECT_TRUE(log.lines().empty());
}

TEST(ValidateObjectTest, DetachedObjectHasThePathsOfADocument) {
  const auto document = loaded(documentText(BROKEN));
  std::vector<Violation> before;
  std::vector<Violation> after;
  LibTarnManagedObject& object = *document->getLibTarnCmData()->getLibTarnManagedObject("A");
  validateObject(object, &before);
  document->getLibTarnCmData()->removeLibTarnManagedObject("A");
  EXPECT_EQ(validateObject(object, &after), ParseResult::BrokenRule);
  EXPECT_EQ(linesOf(after), linesOf(before));
}

TEST(ValidateObjectTest, LimitsBoundWhatIsCollectedAndNotWhatIsCounted) {
  const auto document = loaded(documentText(BROKEN));
  const LibTarnManagedObject& object = *document->getLibTarnCmData()->getLibTarnManagedObject("A");
  std::vector<Violation> all;
  std::vector<Violation> some;
  std::size_t count = 0;
  validateObject(object, &all);
  EXPECT_EQ(validateObject(object, &some, 2, 1U << 20U, &count), ParseResult::BrokenRule);
  EXPECT_EQ(count, all.size());
  EXPECT_EQ(linesOf(some), Strings({linesOf(all)[0], linesOf(all)[1]}));
  EXPECT_EQ(validateObject(object, &some, 5, 1, &count), ParseResult::BrokenRule);
  EXPECT_EQ(count, all.size());
  EXPECT_EQ(some.size(), 1U);
  EXPECT_EQ(validateObject(object, &some, 0, 0, &count), ParseResult::BrokenRule);
  EXPECT_EQ(count, all.size());
  EXPECT_TRUE(some.empty());
}

}  // namespace
