// A validator with a collector records every violation, in the order of the walk, without
// exceptions.

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "support/CapturedLog.hpp"
#include "support/HeapCount.hpp"

namespace {

using namespace libtarn::model;
using libtarn::model::validation::Validator;
using libtarn::model::validation::Violation;
using tarn_test::CapturedLog;

void accept(const LibTarnDocument& document, Validator& validator) {
  document.getItsTarnDomDocument()->getRootElement()->accept(validator);
}

std::vector<Violation> violationsOf(const LibTarnDocument& document) {
  std::vector<Violation> violations;
  Validator validator(&violations);
  accept(document, validator);
  EXPECT_EQ(validator.getPath(), "");
  EXPECT_EQ(validator.getViolationCount(), violations.size());
  return violations;
}

std::vector<std::string> lines(const std::vector<Violation>& violations) {
  std::vector<std::string> result;
  for (const Violation& violation : violations) {
    result.push_back(violation.path + "| " + violation.message);
  }
  return result;
}

std::string noAttribute(const std::string& path, const char* name) {
  return path + "| The '" + path + "' element has no attribute '" + name + "'";
}

TEST(CollectorTest, EveryViolationIsRecordedInTheOrderOfTheWalk) {
  CapturedLog log;
  LibTarnDocument document;
  ASSERT_EQ(document.parse("<tarn xmlns='x'>"
                           "<cmData type='plan'/>"
                           "<cmData type='actual'><header><log/></header><header><log action='a'/>"
                           "</header>"
                           "<managedObject distName='B-1'><extension><p/></extension>"
                           "<list><item><p/></item><p/></list><p/></managedObject>"
                           "<managedObject class='x'/><managedObject class='x' distName='A'/>"
                           "</cmData></tarn>",
                           false),
            0);
  // A new root has a version; that of the text has none.
  const std::string cmData = "tarn > cmData > ";
  const std::string object = cmData + "managedObject:B-1 > ";
  EXPECT_EQ(
      lines(violationsOf(document)),
      (std::vector<std::string>{
          noAttribute("tarn > ", "version"),
          "tarn > | 'x' is not a valid value of 'tarn > ' attribute 'xmlns'",
          "tarn > | The 'tarn > ' element has 2 child 'cmData' elements.  Expected: 1",
          cmData + "| The '" + cmData + "' element has 0 child 'header' elements.  Expected: 1",
          cmData + "| The '" + cmData +
              "' element has 0 child 'managedObject' elements.  Expected: 1",
          cmData + "| The '" + cmData + "' element has 2 child 'header' elements.  Expected: 1",
          noAttribute(cmData + "header > log > ", "dateTime"),
          noAttribute(cmData + "header > log > ", "action"),
          noAttribute(cmData + "header > log > ", "dateTime"),
          noAttribute(cmData + "managedObject > ", "distName"),
          cmData + "managedObject:A > | Invalid distinguished name: 'A'",
          noAttribute(object, "class"),
          noAttribute(object + "p > ", "name"),
          noAttribute(object + "list > ", "name"),
          object + "list > | The '" + object + "list > ' has both 'p' and 'item' children",
          noAttribute(object + "list > item > p > ", "name"),
          noAttribute(object + "extension > p > ", "name"),
      }));
}

TEST(CollectorTest, ValidDocumentLeavesTheCollectorUnchanged) {
  CapturedLog log;
  LibTarnDocument document;
  ASSERT_EQ(document.parse("<tarn xmlns='tarn21.xsd' version='1'><cmData type='actual'><header/>"
                           "</cmData></tarn>",
                           true),
            0);
  std::vector<Violation> violations{{"earlier", ""}};
  Validator validator(&violations);
  accept(document, validator);
  ASSERT_EQ(violations.size(), 1U);
  EXPECT_EQ(violations[0].message, "earlier");
  EXPECT_EQ(validator.getViolationCount(), 0U);
}

TEST(CollectorTest, LimitAppliesToTheRecordedAndNotToTheCountedViolations) {
  CapturedLog log;
  LibTarnDocument document;
  std::string text = "<tarn xmlns='tarn21.xsd' version='1'><cmData type='actual'><header>";
  for (int i = 0; i < 10; ++i) text += "<log dateTime='d'/>";
  ASSERT_EQ(document.parse((text + "</header></cmData></tarn>").c_str(), false), 0);
  for (const std::size_t limit : {0U, 1U, 9U, 10U, 11U}) {
    std::vector<Violation> violations;
    Validator validator(&violations, limit);
    accept(document, validator);
    EXPECT_EQ(violations.size(), std::min<std::size_t>(limit, 10));
    EXPECT_EQ(validator.getViolationCount(), 10U);
  }
}

TEST(CollectorTest, ByteLimitEndsTheRecordingWithTheViolationThatReachesIt) {
  CapturedLog log;
  LibTarnDocument document;
  std::string text = "<tarn xmlns='tarn21.xsd' version='1'><cmData type='actual'><header>";
  for (int i = 0; i < 10; ++i) text += "<log dateTime='d'/>";
  ASSERT_EQ(document.parse((text + "</header></cmData></tarn>").c_str(), false), 0);
  const Violation one = violationsOf(document).front();
  const std::size_t size = one.message.size() + one.path.size();
  for (const auto& [byteLimit, recorded] : std::vector<std::pair<std::size_t, std::size_t>>{
           {0, 0}, {1, 1}, {size, 1}, {size + 1, 2}, {9 * size, 9}, {9 * size + 1, 10}}) {
    std::vector<Violation> violations;
    Validator validator(&violations, Validator::NO_LIMIT, byteLimit);
    accept(document, validator);
    EXPECT_EQ(violations.size(), recorded) << byteLimit;
    EXPECT_EQ(validator.getViolationCount(), 10U);
  }
  std::vector<Violation> violations;
  Validator validator(&violations, 3, 9 * size);
  accept(document, validator);
  EXPECT_EQ(violations.size(), 3U);
}

// Each message repeats the name: without a limit, 100 kB would cause 200 MB.
TEST(CollectorTest, ByteLimitBoundsMessagesThatRepeatALongName) {
  CapturedLog log;
  LibTarnDocument document;
  std::string text = "<tarn xmlns='tarn21.xsd' version='1'><cmData type='actual'><header/>";
  text += "<managedObject class='c' distName='" + std::string(50000, 'A') + "-1'><extension>";
  for (int i = 0; i < 10000; ++i) text += "<p/>";
  text += "</extension></managedObject></cmData></tarn>";
  ASSERT_EQ(document.parse(text.c_str(), false), 0);
  std::vector<Violation> violations;
  Validator validator(&violations, Validator::NO_LIMIT, 1000000);
  accept(document, validator);
  EXPECT_EQ(violations.size(), 10U);
  EXPECT_EQ(validator.getViolationCount(), 10000U);
}

// Random documents with violations: the one that a validator throws is the first that it collects.
TEST(CollectorTest, FirstViolationIsTheOneThatIsThrown) {
  for (unsigned seed = 0; seed < 500; ++seed) {
    CapturedLog log;
    std::mt19937 random(seed);
    const auto maybe = [&random](const char* text) { return random() % 12 == 0 ? "" : text; };
    std::string text = std::string("<tarn ") + maybe("xmlns='tarn21.xsd' ") + maybe("version='1'") +
                       "><cmData type='plan'>" + maybe("<header/>");
    for (unsigned i = 0; i < random() % 6; ++i) {
      const std::string name = "distName='A-" + std::to_string(i) + "'";
      text += std::string("<managedObject ") + maybe("class='x' ") +
              (i > 0 ? name : maybe("distName='B-1'")) + "><p " + maybe("name='p'") + "/><list " +
              maybe("name='l'") + "><item><p " + maybe("name='q'") + "/></item>" +
              (random() % 12 == 0 ? "<p/>" : "") + "</list><extension><p " + maybe("name='e'") +
              "/></extension></managedObject>";
    }
    text += "</cmData></tarn>";
    LibTarnDocument document;
    ASSERT_EQ(document.parse(text.c_str(), false), 0) << "seed " << seed;
    const std::vector<Violation> violations = violationsOf(document);
    EXPECT_EQ(document.validate(), violations.empty() ? 0 : 2) << "seed " << seed;
    EXPECT_EQ(document.getDiagnostic().message,
              violations.empty() ? "" : violations.front().message)
        << "seed " << seed;
  }
}

TEST(CollectorTest, ValidationAllocatesNothingForAnElement) {
  CapturedLog log;
  std::string text = "<tarn xmlns='tarn21.xsd' version='1'><cmData type='plan'><header/>";
  for (int i = 0; i < 1000; ++i) {
    text += "<managedObject class='x' distName='NETWORK-1/SITE-100/RADIO-1000/A-" +
            std::to_string(i) +
            "'><p name='p'>1</p><list name='l'><item><p name='q'/></item></list>"
            "<extension name='e'><p name='r'/></extension></managedObject>";
  }
  LibTarnDocument document;
  ASSERT_EQ(document.parse((text + "</cmData></tarn>").c_str(), false), 0);
  const std::size_t before = tarn_test::heapAllocations();
  {
    Validator validator;
    accept(document, validator);
  }
  EXPECT_LE(tarn_test::heapAllocations() - before, 2U);  // the constructor of std::deque
}

}  // namespace
