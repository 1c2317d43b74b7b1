// Everything that is wrong with a text, in one reading.

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <ostream>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/validation/Diagnosis.hpp"
#include "support/CapturedLog.hpp"
#include "support/HeapCount.hpp"
#include "support/MapFault.hpp"
#include "support/SmallStack.hpp"
#include "support/documents.hpp"

namespace libtarn {
namespace model {
namespace validation {

static std::tuple<std::size_t, int, std::string, std::string, std::string, std::size_t> factsOf(
    const Finding& finding) {
  return {finding.offset, finding.code,     finding.message,
          finding.path,   finding.distName, finding.firstOffset};
}

static bool operator==(const Finding& a, const Finding& b) { return factsOf(a) == factsOf(b); }

static bool operator<(const Finding& a, const Finding& b) { return factsOf(a) < factsOf(b); }

static void PrintTo(const Finding& finding, std::ostream* out) {
  *out << finding.offset << " (" << finding.firstOffset << ") " << finding.code << " "
       << finding.path << "| " << finding.distName << " | " << finding.message;
}

}  // namespace validation
}  // namespace model
}  // namespace libtarn

namespace {

using namespace libtarn::model;
using libtarn::model::validation::Diagnosis;
using libtarn::model::validation::Finding;
using libtarn::util::NO_OFFSET;
using tarn_test::CapturedLog;
using tarn_test::documentText;
using tarn_test::vectorOf;

constexpr int MALFORMED = ParseResult::Malformed;
constexpr int BROKEN = ParseResult::BrokenRule;

std::vector<Finding> findingsOf(const std::string& text) {
  std::size_t count = 0;
  std::vector<Finding> findings =
      Diagnosis::of(vectorOf(text), Diagnosis::NO_LIMIT, Diagnosis::NO_LIMIT, &count);
  EXPECT_EQ(count, findings.size());
  return findings;
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + with.size())) {
    text.replace(at, what.size(), with);
  }
  return text;
}

// "LINE:COLUMN" or "-".
std::string placeOf(const std::string& text, std::size_t offset) {
  if (offset == NO_OFFSET) return "-";
  const libtarn::util::TextPosition place = libtarn::util::locate(text.c_str(), offset);
  return std::to_string(place.line) + ":" + std::to_string(place.column);
}

// What a host would print.
std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (const Finding& each : findingsOf(text)) {
    std::string line = placeOf(text, each.offset);
    if (each.firstOffset != NO_OFFSET) line += " (" + placeOf(text, each.firstOffset) + ")";
    lines.push_back(line + " " + each.path + "| " + each.distName + " | " + each.message);
  }
  return lines;
}

// A text has findings if and only if a parse with validation refuses it, and then the reason of the
// parse is one of them.
void expectAgreementWithParse(const std::string& text) {
  CapturedLog log;
  LibTarnDocument document;
  const int result = document.parse(vectorOf(text), true);
  const std::vector<Finding> findings = findingsOf(text);
  ASSERT_EQ(findings.empty(), result == ParseResult::Done) << text;
  if (findings.empty()) return;
  const Diagnostic& expected = document.getDiagnostic();
  const bool isFound =
      std::any_of(findings.begin(), findings.end(), [&expected](const Finding& each) {
        return each.code == expected.code && each.message == expected.message;
      });
  ASSERT_TRUE(isFound) << expected.message << "\n" << text;
  // The last byte may be the NUL at which the parser ended.
  for (const Finding& each : findings) {
    ASSERT_TRUE(each.offset <= text.size() || each.offset == NO_OFFSET) << text;
    ASSERT_TRUE(each.firstOffset < each.offset || each.firstOffset == NO_OFFSET) << text;
  }
}

// A fault for each rule, of which a document may have many. "$" stands for a number, "@" is where
// the element with the fault begins and is left out, "~" is where the first one of its name begins
// and is replaced by "<". "%" in the message is the path.
struct Fault {
  const char* text;
  int code;
  const char* message;
  const char* path;      // below the cmData
  const char* distName;  // empty outside of objects
};

constexpr const char* NO_NAME = "The '%' element has no attribute 'name'";
constexpr const char* UNKNOWN = "unknown TARN object";
constexpr const char* OBJECT = "managedObject:A-$ > ";

const std::vector<Fault> LOG_FAULTS = {
    {"@<log action='a'/>", BROKEN, "The '%' element has no attribute 'dateTime'", "header > log > ",
     ""},
    {"@<log dateTime='d'>text</log>", BROKEN, "The '%' element has no attribute 'action'",
     "header > log > ", ""},
    {"@<entry$><log/></entry$>", MALFORMED, UNKNOWN, "header > entry$ > ", ""},
};

const std::vector<Fault> OBJECT_FAULTS = {
    {"@<managedObject distName='A-$'/>", BROKEN, "The '%' element has no attribute 'class'",
     "managedObject:A-$ > ", "A-$"},
    {"@<managedObject class='C' distName='A$'/>", BROKEN, "Invalid distinguished name: 'A$'",
     "managedObject:A$ > ", "A$"},
    {"@<managedObject class='C' distName='A-$' operation='replace'/>", BROKEN,
     "'replace' is not a valid value of 'managedObject' attribute 'operation'",
     "managedObject:A-$ > ", "A-$"},
    {"@<managedObject class='C' distName='A-$' operation=''/>", BROKEN,
     "'' is not a valid value of 'managedObject' attribute 'operation'", "managedObject:A-$ > ",
     "A-$"},
    {"~managedObject class='C' distName='A-$'/>@<managedObject class='D' distName='A-$'/>", BROKEN,
     "The 'cmData' element already contains a 'managedObject' element with 'distName=A-$'",
     "managedObject:A-$ > ", "A-$"},
    {"@<object distName='A-$'><managedObject/><object/></object>", MALFORMED, UNKNOWN, "object > ",
     ""},
    {"@<tarn/>", MALFORMED, UNKNOWN, "tarn > ", ""},
    {"@<?xml version='1.0'?>", MALFORMED, UNKNOWN, "xml > ", ""},
};

// Within an object "A-$".
const std::vector<Fault> PARAMETER_FAULTS = {
    {"@<p>1</p>", BROKEN, NO_NAME, "p > ", "A-$"},
    {"~p name='d'>1</p><p name='e'/>@<p name='d'>2</p>", BROKEN,
     "The 'A-$' element already contains a 'p' element with 'name=d'", "p:d > ", "A-$"},
    {"@<list><p>1</p></list>", BROKEN, NO_NAME, "list > ", "A-$"},
    {"~list name='d'/>@<list name='d'/>", BROKEN,
     "The 'A-$' element already contains a 'list' element with 'name=d'", "list:d > ", "A-$"},
    {"@<list name='m'><item/><p>1</p></list>", BROKEN, "The '%' has both 'p' and 'item' children",
     "list:m > ", "A-$"},
    {"<list name='n'><item>@<p/></item></list>", BROKEN, NO_NAME, "list:n > item > p > ", "A-$"},
    {"<list name='o'><item/><item>~p name='c'/>@<p name='c'/></item></list>", BROKEN,
     "The 'A-$(list: o)' element already contains a 'p' element with 'name=c'",
     "list:o > item > p:c > ", "A-$"},
    {"<extension name='x'><p name='y'/><p name='y'/>@<p>1</p></extension>", BROKEN, NO_NAME,
     "extension:x > p > ", "A-$"},
    {"<extension name='x'>@<param name='y'/></extension>", MALFORMED, UNKNOWN,
     "extension:x > param > ", "A-$"},
    {"<list name='q'>@<value>1<p/></value></list>", MALFORMED, UNKNOWN, "list:q > value > ", "A-$"},
};

// A text with planted faults, and what is to be found.
class PlantedText {
 public:
  const std::string& text() const { return text_; }
  std::vector<Finding>& expected() { return expected_; }

  void add(const std::string& text) { text_ += text; }

  // Where the next text begins.
  void expect(int code, const std::string& message, const std::string& path,
              const std::string& distName) {
    expected_.push_back(
        {code, replaced(message, "%", path), path, distName, text_.size(), NO_OFFSET});
  }

  void plant(const Fault& fault, const std::string& prefix = "") {
    const std::string number = std::to_string(++number_);
    const auto numbered = [&number](const char* text) { return replaced(text, "$", number); };
    const bool isParameter = prefix == OBJECT;
    if (isParameter) add("<managedObject class='C' distName='A-" + number + "'>");
    std::size_t first = NO_OFFSET;
    for (const char character : numbered(fault.text)) {
      if (character == '@') {
        expect(fault.code, numbered(fault.message),
               "tarn > cmData > " + numbered(prefix.c_str()) + numbered(fault.path),
               numbered(fault.distName));
        expected_.back().firstOffset = first;
      } else if (character == '~') {
        first = text_.size();
        text_ += '<';
      } else {
        text_ += character;
      }
    }
    if (isParameter) add("</managedObject>");
    add("\n");
  }

 private:
  std::string text_;
  std::vector<Finding> expected_;
  int number_ = 0;
};

TEST(DiagnosisTest, FaultOfEachRuleIsFoundWhereItIs) {
  for (const auto* const faults : {&LOG_FAULTS, &OBJECT_FAULTS, &PARAMETER_FAULTS}) {
    const bool isLog = faults == &LOG_FAULTS;
    for (const Fault& fault : *faults) {
      PlantedText planted;
      planted.add("<tarn xmlns='tarn21.xsd' version='2.1'>\n<cmData type='actual'>\n<header>");
      if (isLog) planted.plant(fault);
      planted.add("</header>\n");
      if (!isLog) planted.plant(fault, faults == &PARAMETER_FAULTS ? OBJECT : "");
      planted.add("</cmData></tarn>");
      EXPECT_EQ(findingsOf(planted.text()), planted.expected()) << planted.text();
      expectAgreementWithParse(planted.text());
    }
  }
}

TEST(DiagnosisTest, PlacesAreThoseOfTheElements) {
  const std::string cmData = "tarn > cmData > ";
  const std::string object = cmData + "managedObject:A-1 > ";
  EXPECT_EQ(
      linesOf("\xEF\xBB\xBF<?xml version='1.0'?>\n"
              "<tarn version='2.1' xmlns='tarn20.xsd'>\n"
              " <cmData type='plans'><header/>\n"
              "  <managedObject class='C' distName='A-1'>\n"
              "   <p name='x'>1</p><p/>\n"
              "   <list name='l'>\n"
              "    <item><p name='x'>1</p>\n"
              "      <p name='x'>2</p></item>\n"
              "    <itme/></list>\n"
              "   <p name='x'/>\n"
              "  </managedObject>\n"
              " </cmData>\n"
              "</tarn>\n"),
      (std::vector<std::string>{
          "2:1 tarn > |  | 'tarn20.xsd' is not a valid value of 'tarn > ' attribute 'xmlns'",
          "3:2 " + cmData + "|  | 'plans' is not a valid value of 'cmData' attribute 'type'",
          "5:21 " + object + "p > | A-1 | The '" + object + "p > ' element has no attribute 'name'",
          "8:7 (7:11) " + object +
              "list:l > item > p:x > | A-1 | The 'A-1(list: l)' element already contains a "
              "'p' element with 'name=x'",
          "9:5 " + object + "list:l > itme > | A-1 | unknown TARN object",
          "10:4 (5:4) " + object +
              "p:x > | A-1 | The 'A-1' element already contains a 'p' element with "
              "'name=x'"}));
}

// Of root and body, of which a document has one each.
TEST(DiagnosisTest, RulesOfRootAndBody) {
  struct Case {
    const char* text;
    std::vector<std::string> lines;
  };
  const std::string cmData = "tarn > cmData > |  | ";
  const std::string noHeader =
      "The 'tarn > cmData > ' element has 0 child 'header' elements.  Expected: 1";
  const Case cases[] = {
      {"<tarn version='1'><cmData type='actual'><header/></cmData></tarn>",
       {"1:1 tarn > |  | The 'tarn > ' element has no attribute 'xmlns'"}},
      {"\n <tarn xmlns='tarn21.xsd'><cmData type='actual'><header/></cmData></tarn>",
       {"2:2 tarn > |  | The 'tarn > ' element has no attribute 'version'"}},
      {"<tarn version='1' xmlns='tarn21.xsd'/>",
       {"1:1 tarn > |  | The 'tarn > ' element has 0 child 'cmData' elements.  Expected: 1"}},
      {"<tarn version='1' xmlns='tarn21.xsd'>\n<cmData type='actual'><header/></cmData>\n"
       "<cmData type='actual'/>\n<cmData type='actual'><header/><header/><header/></cmData></tarn>",
       {"1:1 tarn > |  | The 'tarn > ' element has 2 child 'cmData' elements.  Expected: 1",
        "3:1 " + cmData + noHeader,
        "4:1 " + cmData +
            "The 'tarn > cmData > ' element has 2 child 'header' elements.  Expected: 1"}},
      {"<tarn version='1' xmlns='tarn21.xsd'>\n<cmData/></tarn>",
       {"2:1 " + cmData + "The 'cmData' element has no attribute 'type'",
        "2:1 " + cmData + noHeader}},
      {"<tarn version='1' xmlns='tarn21.xsd'>\n<cmData type='plan'></cmData></tarn>",
       {"2:1 " + cmData + noHeader,
        "2:1 " + cmData +
            "The 'tarn > cmData > ' element has 0 child 'managedObject' elements.  Expected: 1"}},
      // The names are one body's own.
      {"<tarn version='1' xmlns='tarn21.xsd'>\n"
       "<cmData type='plan'><header/><managedObject class='C' distName='A-1'/></cmData>\n"
       "<cmData type='plan'><header/><managedObject class='C' distName='A-1'/></cmData></tarn>",
       {"1:1 tarn > |  | The 'tarn > ' element has 2 child 'cmData' elements.  Expected: 1"}},
      // A document without a root has an empty one.
      {"", {"- tarn > |  | The 'tarn > ' element has 0 child 'cmData' elements.  Expected: 1"}},
      {"<p/>", {"- tarn > |  | The 'tarn > ' element has 0 child 'cmData' elements.  Expected: 1"}},
      // Unless something else says why.
      {"<Tarn><cmData/></Tarn>", {"1:1 Tarn > |  | unknown TARN object"}},
      {"text", {"1:1 |  | expected <"}},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(linesOf(each.text), each.lines) << each.text;
    expectAgreementWithParse(each.text);
  }
}

TEST(DiagnosisTest, KindNamesTheRule) {
  using Kind = Finding::Kind;
  const auto kindsOf = [](const std::string& text) {
    std::vector<Kind> kinds;
    for (const Finding& each : findingsOf(text)) kinds.push_back(each.kind);
    return kinds;
  };
  EXPECT_EQ(kindsOf("<tarn><cmData/><cmData type='plan'><header><log/></header></cmData></tarn>"),
            (std::vector<Kind>{Kind::RootVersion, Kind::RootNamespace, Kind::RootBody,
                               Kind::BodyType, Kind::BodyHeader, Kind::PlanWithoutObject,
                               Kind::LogTime, Kind::LogAction}));
  EXPECT_EQ(kindsOf(documentText("<managedObject/><managedObject distName=''/>")),
            (std::vector<Kind>{Kind::ObjectClass, Kind::ObjectName, Kind::ObjectClass,
                               Kind::InvalidObjectName, Kind::DuplicateObject}));
  EXPECT_EQ(kindsOf(documentText("<managedObject class='C' distName='A-1' operation='?'>"
                                 "<p/><p name='a'/><p name='a'/>"
                                 "<list/><list name='l'><p/><item/></list><list name='l'/>"
                                 "<list name='m'><item><p name='c'/><p name='c'/></item></list>"
                                 "<wrong/></managedObject>")),
            (std::vector<Kind>{Kind::ObjectOperation, Kind::ParameterName, Kind::DuplicateParameter,
                               Kind::ListName, Kind::MixedList, Kind::DuplicateList,
                               Kind::DuplicateComponent, Kind::UnknownElement}));
  EXPECT_EQ(kindsOf("<tarn"), (std::vector<Kind>{Kind::MalformedXml}));
}

TEST(DiagnosisTest, ObjectsAndParametersWithoutNameAreDuplicatesAsForALoad) {
  const std::string text = documentText(
      "\n<managedObject class='C'><p/>\n<p name=''/></managedObject>\n<managedObject class='C'/>");
  const std::string object = "tarn > cmData > managedObject > ";
  const std::string noDistName = "The '" + object + "' element has no attribute 'distName'";
  EXPECT_EQ(
      linesOf(text),
      (std::vector<std::string>{
          "2:1 " + object + "|  | " + noDistName,
          "2:26 " + object + "p > |  | The '" + object + "p > ' element has no attribute 'name'",
          "3:1 (2:26) " + object +
              "p > |  | The '' element already contains a 'p' element with 'name='",
          "4:1 " + object + "|  | " + noDistName,
          "4:1 (2:1) " + object +
              "|  | The 'cmData' element already contains a 'managedObject' element with "
              "'distName='"}));
  expectAgreementWithParse(text);
}

// As in the indexes.
TEST(DiagnosisTest, NameEndsAtANul) {
  const std::string text = documentText(
      "<managedObject class='C' distName='A-1&#0;x'><p name='a&#0;1'/><p name='a&#0;2'/>"
      "</managedObject><managedObject class='C' distName='A-1&#0;y'/>");
  const std::vector<Finding> findings = findingsOf(text);
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].message, "The 'A-1' element already contains a 'p' element with 'name=a'");
  EXPECT_EQ(findings[0].firstOffset, text.find("<p"));
  EXPECT_EQ(findings[1].message,
            "The 'cmData' element already contains a 'managedObject' element with 'distName=A-1'");
  expectAgreementWithParse(text);
}

TEST(DiagnosisTest, EachFurtherElementOfANameIsFoundWithThePlaceOfTheFirst) {
  std::string objects;
  for (int i = 0; i < 5; ++i) {
    objects +=
        "\n<managedObject class='C' distName='A-1'><p name='x'/><p name='x'/><p name='x'/>"
        "</managedObject>";
  }
  const std::string text = documentText(objects);
  std::vector<std::string> places;
  for (const Finding& each : findingsOf(text)) {
    places.push_back(placeOf(text, each.offset) + " " + placeOf(text, each.firstOffset));
  }
  EXPECT_EQ(places,
            (std::vector<std::string>{"2:54 2:41", "2:67 2:41", "3:1 2:1", "3:54 3:41", "3:67 3:41",
                                      "4:1 2:1", "4:54 4:41", "4:67 4:41", "5:1 2:1", "5:54 5:41",
                                      "5:67 5:41", "6:1 2:1", "6:54 6:41", "6:67 6:41"}));
}

// What is no part of the model has no rules; an abbreviated tag is none of the model's.
TEST(DiagnosisTest, ElementsThatTheModelDoesNotSeeHaveNoFindings) {
  for (const char* const content :
       {"<p/><p/>", "<header><header/><managedObject/></header>", "<cmData/>",
        "<manag/><manag/><l/><e><p/></e>",
        "<managedObject class='C' distName='A-1'><managedObject/><managedObject/><item><p/></item>"
        "<cmData/><p name='x'><p/><p/></p></managedObject>"}) {
    const std::string text = tarn_test::cmDataText(content, "actual");
    const std::string all = text.find("<header>") == std::string::npos
                                ? replaced(text, "</cmData></tarn>", "<header/></cmData></tarn>")
                                : text;
    EXPECT_EQ(linesOf(all), std::vector<std::string>()) << all;
    expectAgreementWithParse(all);
  }
}

// Malformed XML

TEST(DiagnosisTest, MalformedTextHasThatFaultAfterThoseBeforeIt) {
  struct Case {
    const char* text;
    std::vector<std::string> lines;
  };
  const std::string start = "<tarn xmlns='tarn21.xsd' version='1'><cmData type='plan'>";
  const std::string cmData = "tarn > cmData > ";
  const std::string object = cmData + "managedObject:A-1 > ";
  const Case cases[] = {
      // What may still come is no fault, nor what an incomplete start tag lacks.
      {"<tarn", {"1:6 |  | expected >"}},
      {"<tarn xmlns='x", {"1:15 |  | expected ' or \""}},
      {"<tarn xmlns='tarn21.xsd' version='1'>\n", {"2:1 |  | unexpected end of data"}},
      {"<tarn xmlns='tarn21.xsd' version='1'><cmData type='plan'>\n",
       {"2:1 tarn > |  | unexpected end of data"}},
      {"<tarn version='1'><cmData type='plan'>\n<header/><header/><managedObject",
       {"1:1 tarn > |  | The 'tarn > ' element has no attribute 'xmlns'",
        "1:19 " + cmData + "|  | The '" + cmData +
            "' element has 2 child 'header' elements.  Expected: 1",
        "2:33 " + cmData + "|  | expected >"}},
      {"<tarn xmlns='tarn21.xsd' version='1'><cmData type='plan'><managedObject class='C' "
       "distName='A-1'>\n<p name='x'/>\n<p name='x'/>\n<list><p/><item/><item><p",
       {"3:1 (2:1) " + object +
            "p:x > | A-1 | The 'A-1' element already contains a 'p' element with 'name=x'",
        "4:1 " + object + "list > | A-1 | The '" + object +
            "list > ' element has no attribute "
            "'name'",
        "4:1 " + object + "list > | A-1 | The '" + object +
            "list > ' has both 'p' and 'item' children",
        "4:26 " + object + "list > item > | A-1 | expected >"}},
      {"<tarn xmlns='tarn21.xsd' version='1'/>\n</tarn>",
       {"1:1 tarn > |  | The 'tarn > ' element has 0 child 'cmData' elements.  Expected: 1",
        "2:2 |  | expected element name"}},
      // The root that is used again.
      {"<tarn/>\n<tarn", {"2:6 |  | expected >"}},
      {"<tarn/>\n<tarn><cmData type='no'/>\n<p",
       {"2:1 tarn > |  | The 'tarn > ' element has no "
        "attribute 'version'",
        "2:1 tarn > |  | The 'tarn > ' element has no "
        "attribute 'xmlns'",
        "2:7 tarn > cmData > |  | 'no' is not a valid "
        "value of 'cmData' attribute 'type'",
        "2:7 tarn > cmData > |  | The 'tarn > cmData > "
        "' element has 0 child 'header' elements.  "
        "Expected: 1",
        "3:3 tarn > |  | expected >"}},
      // Unknown elements at the end.
      {"<foo", {"1:1 foo > |  | unknown TARN object", "1:5 foo > |  | expected >"}},
      {"<p><foo a", {"1:4 p > foo > |  | unknown TARN object", "1:10 p > foo > |  | expected ="}},
      {"<p><?xml a", {"1:4 p > xml > |  | unknown TARN object", "1:11 p > xml > |  | expected ="}},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(linesOf(each.text), each.lines) << each.text;
    expectAgreementWithParse(each.text);
  }
}

TEST(DiagnosisTest, VectorWithoutTerminatingNulIsMalformed) {
  const std::vector<Finding> expected = {
      {MALFORMED, "unexpected end of data", "", "", 5, NO_OFFSET}};
  EXPECT_EQ(Diagnosis::of(std::vector<char>{'<', 'p', '/', '>', ' '}), expected);
  EXPECT_EQ(Diagnosis::of(std::vector<char>()).size(), 1U);
}

// What is reused at the top level of a text is not reused below an unknown element.
TEST(DiagnosisTest, RootAndDeclarationBelowAnUnknownElementAreUnknown) {
  const std::string good = tarn_test::cmDataText("<header/>", "actual");
  EXPECT_EQ(linesOf("<foo>\n<tarn><cmData/></tarn><?xml version='1.0'?></foo>\n"
                    "<?xml version='1.0'?>\n" +
                    good),
            std::vector<std::string>{"1:1 foo > |  | unknown TARN object"});
}

// All at once

TEST(DiagnosisTest, FiftyFaultsAreFiftyFindings) {
  PlantedText planted;
  std::vector<std::size_t> lines;
  const auto lineNumber = [&planted] {
    return static_cast<std::size_t>(
               std::count(planted.text().begin(), planted.text().end(), '\n')) +
           1;
  };
  planted.add("<?xml version='1.0'?>\n");
  planted.expect(BROKEN, "The '%' element has no attribute 'version'", "tarn > ", "");
  planted.expect(BROKEN, "'x' is not a valid value of '%' attribute 'xmlns'", "tarn > ", "");
  planted.expect(BROKEN, "The '%' element has 2 child 'cmData' elements.  Expected: 1", "tarn > ",
                 "");
  lines = {2, 2, 2};
  planted.add("<tarn xmlns='x'>\n");
  planted.expect(BROKEN, "The 'cmData' element has no attribute 'type'", "tarn > cmData > ", "");
  planted.expect(BROKEN, "The '%' element has 0 child 'header' elements.  Expected: 1",
                 "tarn > cmData > ", "");
  lines.insert(lines.end(), {3, 3});
  planted.add("<cmData/>\n");
  planted.expect(BROKEN, "The '%' element has 2 child 'header' elements.  Expected: 1",
                 "tarn > cmData > ", "");
  lines.push_back(4);
  planted.add("<cmData type='plan'>\n<header/>\n<header>\n");
  const auto plantAll = [&](const std::vector<Fault>& faults, const char* prefix) {
    for (const Fault& fault : faults) {
      lines.push_back(lineNumber());
      planted.plant(fault, prefix);
    }
  };
  plantAll(LOG_FAULTS, "");
  planted.add("</header>\n");
  plantAll(OBJECT_FAULTS, "");
  plantAll(PARAMETER_FAULTS, OBJECT);
  plantAll(OBJECT_FAULTS, "");
  plantAll(PARAMETER_FAULTS, OBJECT);
  for (int i = 0; i < 5; ++i) {
    lines.push_back(lineNumber());
    planted.plant(PARAMETER_FAULTS[static_cast<std::size_t>(i)], OBJECT);
  }
  planted.add("</cmData>\n</tarn>\n");
  const std::vector<Finding> findings = findingsOf(planted.text());
  ASSERT_EQ(findings.size(), 50U);
  EXPECT_EQ(findings, planted.expected());
  for (std::size_t i = 0; i < findings.size(); ++i) {
    EXPECT_EQ(libtarn::util::locate(planted.text().c_str(), findings[i].offset).line, lines[i]);
  }
  expectAgreementWithParse(planted.text());
}

// Random documents

class RandomText {
 public:
  explicit RandomText(unsigned seed) : random_(seed) {}

  PlantedText make() {
    PlantedText planted;
    if (chance(2)) planted.add("<?xml version='1.0'?>\n");
    const std::size_t bodies = chance(8) ? 2 : chance(20) ? 0 : 1;
    addRoot(planted, bodies);
    for (std::size_t i = 0; i < bodies; ++i) addBody(planted);
    planted.add("</tarn>\n");
    return planted;
  }

  // Bytes that mean something to the parser or to the rules.
  std::string damaged(std::string text) {
    static const std::vector<std::string> PIECES = {"<",
                                                    ">",
                                                    "/",
                                                    "'",
                                                    "=",
                                                    "&#0;",
                                                    "<p>",
                                                    "</p>",
                                                    "name",
                                                    "<list ",
                                                    "<item>",
                                                    "</",
                                                    "<?xml ",
                                                    "<x/>",
                                                    "<!--",
                                                    "-->",
                                                    "A-1",
                                                    "<tarn>",
                                                    " type",
                                                    "cmData>",
                                                    "update",
                                                    "<header/>",
                                                    "<managedObject class='C' distName='A-1'>"};
    for (std::size_t count = 1 + number(4); count > 0; --count) {
      const std::size_t at = number(text.size());
      if (chance(3)) {
        text.erase(at, number(20));
      } else if (chance(2)) {
        text[at] = PIECES[number(PIECES.size())][0];
      } else {
        text.insert(at, PIECES[number(PIECES.size())]);
      }
      if (text.empty()) return text;
    }
    return chance(10) ? text.substr(0, number(text.size())) : text;
  }

 private:
  std::size_t number(std::size_t end) { return random_() % end; }
  bool chance(unsigned n) { return random_() % n == 0; }

  void addRoot(PlantedText& planted, std::size_t bodies) {
    std::string attributes;
    if (chance(5)) {
      planted.expect(BROKEN, "The '%' element has no attribute 'version'", "tarn > ", "");
    } else {
      attributes += " version='2'";
    }
    if (chance(10)) {
      planted.expect(BROKEN, "The '%' element has no attribute 'xmlns'", "tarn > ", "");
    } else if (chance(10)) {
      planted.expect(BROKEN, "'tarn' is not a valid value of '%' attribute 'xmlns'", "tarn > ", "");
      attributes += " xmlns='tarn'";
    } else {
      attributes += " xmlns='tarn21.xsd'";
    }
    if (bodies != 1) {
      planted.expect(BROKEN,
                     "The '%' element has " + std::to_string(bodies) +
                         " child 'cmData' elements.  Expected: 1",
                     "tarn > ", "");
    }
    planted.add("<tarn" + attributes + ">");
  }

  void addBody(PlantedText& planted) {
    const std::string path = "tarn > cmData > ";
    static const std::vector<std::string> TYPES = {"plan", "actual", "defaults", "", "plans"};
    const std::string& type = TYPES[chance(3) ? number(5) : number(3)];
    const std::size_t headers = chance(6) ? 0 : chance(6) ? 2 : 1;
    const std::size_t objects = chance(5) ? 0 : 1 + number(12);
    if (type.empty()) {
      planted.expect(BROKEN, "The 'cmData' element has no attribute 'type'", path, "");
    } else if (type == "plans") {
      planted.expect(BROKEN, "'plans' is not a valid value of 'cmData' attribute 'type'", path, "");
    }
    if (headers != 1) {
      planted.expect(BROKEN,
                     "The '%' element has " + std::to_string(headers) +
                         " child 'header' elements.  Expected: 1",
                     path, "");
    }
    if (type == "plan" && objects == 0) {
      planted.expect(BROKEN, "The '%' element has 0 child 'managedObject' elements.  Expected: 1",
                     path, "");
    }
    planted.add("<cmData" + (type.empty() ? "" : " type='" + type + "'") + ">");
    for (std::size_t i = 0; i < headers; ++i) addHeader(planted);
    for (std::size_t i = 0; i < objects; ++i) addObject(planted, i);
    planted.add("</cmData>");
  }

  void addHeader(PlantedText& planted) {
    planted.add("<header>");
    if (chance(3)) planted.add("<log dateTime='d' action='a'/>");
    if (chance(3)) planted.plant(LOG_FAULTS[number(LOG_FAULTS.size())]);
    planted.add("</header>");
  }

  // The first one is there for a plan.
  void addObject(PlantedText& planted, std::size_t i) {
    if (i == 0 || chance(2)) {
      planted.add("<managedObject class='C' distName='B-" + std::to_string(i) +
                  "' operation='update'><p name='x'>1</p><list name='x'><p/><p/></list>"
                  "<list name='y'><item><p name='x'/></item></list></managedObject>");
    } else if (chance(2)) {
      planted.plant(OBJECT_FAULTS[number(OBJECT_FAULTS.size())]);
    } else {
      planted.plant(PARAMETER_FAULTS[number(PARAMETER_FAULTS.size())], OBJECT);
    }
  }

  std::mt19937 random_;
};

TEST(DiagnosisTest, ExactlyTheFaultsOfARandomDocumentAreFound) {
  std::size_t faults = 0;
  std::size_t faultless = 0;
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    PlantedText planted = RandomText(seed).make();
    std::vector<Finding> findings = findingsOf(planted.text());
    ASSERT_TRUE(
        std::is_sorted(findings.begin(), findings.end(),
                       [](const Finding& a, const Finding& b) { return a.offset < b.offset; }));
    faults += findings.size();
    faultless += findings.empty() ? 1 : 0;
    std::sort(findings.begin(), findings.end());
    std::sort(planted.expected().begin(), planted.expected().end());
    ASSERT_EQ(findings, planted.expected()) << planted.text();
    expectAgreementWithParse(planted.text());
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(faults, 2000U);
  EXPECT_GT(faultless, 20U);
}

TEST(DiagnosisTest, DamagedDocumentHasFindingsExactlyWhenAParseRefusesIt) {
  for (unsigned seed = 0; seed < 2000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomText random(seed);
    expectAgreementWithParse(random.damaged(random.make().text()));
    if (HasFatalFailure()) return;
  }
}

// Limits

TEST(DiagnosisTest, LimitsBoundWhatIsReturnedAndNotWhatIsCounted) {
  PlantedText planted;
  planted.add("<tarn xmlns='tarn21.xsd' version='1'><cmData type='plan'><header/>");
  for (int i = 0; i < 10; ++i) planted.plant(OBJECT_FAULTS[0]);
  planted.add("</cmData></tarn>");
  const std::vector<Finding> all = findingsOf(planted.text());
  ASSERT_EQ(all.size(), 10U);
  const auto expectFirst = [&](std::size_t limit, std::size_t byteLimit, std::size_t expected) {
    std::size_t count = 0;
    EXPECT_EQ(
        Diagnosis::of(planted.text().c_str(), limit, byteLimit, &count),
        std::vector<Finding>(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(expected)));
    EXPECT_EQ(count, 10U);
  };
  for (const std::size_t limit : {0U, 1U, 9U, 10U}) {
    expectFirst(limit, Diagnosis::NO_LIMIT, limit);
  }
  expectFirst(11, Diagnosis::NO_LIMIT, 10);
  const std::size_t size = all[0].message.size() + all[0].path.size() + all[0].distName.size();
  expectFirst(Diagnosis::NO_LIMIT, 0, 0);
  expectFirst(Diagnosis::NO_LIMIT, 1, 1);
  expectFirst(Diagnosis::NO_LIMIT, size, 1);
  expectFirst(Diagnosis::NO_LIMIT, size + 1, 2);
  expectFirst(Diagnosis::NO_LIMIT, 9 * size, 9);
  expectFirst(3, 9 * size, 3);
  EXPECT_EQ(Diagnosis::of(planted.text().c_str()), all);
}

// Each message repeats the name: without a bound 150 kB would give a gigabyte.
TEST(DiagnosisTest, TextsThatRepeatALongNameAreBoundedWithoutBeingAsked) {
  const std::string name = std::string(50000, 'A') + "-1";
  std::string text = "<managedObject class='C' distName='" + name + "'>";
  for (int i = 0; i < 25000; ++i) text += "<p/>";
  text = documentText(text + "</managedObject>");
  std::size_t count = 0;
  const std::vector<Finding> findings =
      Diagnosis::of(text.c_str(), Diagnosis::NO_LIMIT, Diagnosis::DEFAULT_BYTE_LIMIT, &count);
  EXPECT_EQ(count, 49999U);  // each without a name, and each but the first a duplicate
  std::size_t bytes = 0;
  for (const Finding& each : findings) {
    bytes += each.message.size() + each.path.size() + each.distName.size();
  }
  EXPECT_GE(bytes, Diagnosis::DEFAULT_BYTE_LIMIT);
  EXPECT_LT(bytes, Diagnosis::DEFAULT_BYTE_LIMIT + 4 * name.size());
}

// Hosts

class OnlyB : public IDistinguishedNameValidator {
 public:
  bool isValid(const char* distName) const override { return *distName == 'B'; }
};

TEST(DiagnosisTest, NameValidatorOfTheHostIsAsked) {
  const std::string text = documentText(
      "<managedObject class='C' distName='A-1'/><managedObject class='C' distName='B'/>");
  const OnlyB onlyB;
  const std::vector<Finding> findings =
      Diagnosis::of(text.c_str(), Diagnosis::NO_LIMIT, Diagnosis::NO_LIMIT, nullptr, &onlyB);
  ASSERT_EQ(findings.size(), 1U);
  EXPECT_EQ(findings[0].message, "Invalid distinguished name: 'A-1'");
  EXPECT_EQ(findings[0].distName, "A-1");
  EXPECT_EQ(findingsOf(text)[0].message, "Invalid distinguished name: 'B'");
}

TEST(DiagnosisTest, NothingIsLogged) {
  CapturedLog log;
  findingsOf("<foo/><tarn><cmData type='x'><managedObject/></cmData></tarn><p");
  EXPECT_TRUE(log.lines().empty());
}

// Hostile texts

std::string repeated(const std::string& text, std::size_t count) {
  std::string result;
  result.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

TEST(DiagnosisTest, AMillionNestedElementsTakeNoStack) {
  constexpr std::size_t MILLION = 1000000;
  tarn_test::runOnSmallStack([] {
    const std::string known = repeated("<p>", MILLION);
    std::vector<Finding> findings = findingsOf(known);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].offset, known.size());
    EXPECT_EQ(findings[0].path.size(), 4 * (MILLION - 1));
    EXPECT_EQ(findingsOf(known + repeated("</p>", MILLION)).size(), 1U);
    // One unknown element, whatever is below.
    const std::string unknown = repeated("<x><p>", MILLION / 2);
    EXPECT_EQ(findingsOf(unknown).size(), 2U);
    findings = findingsOf(unknown + repeated("</p></x>", MILLION / 2));
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].offset, 0U);
    // At every depth one: the paths of all of them would be a terabyte.
    std::size_t count = 0;
    EXPECT_LT(Diagnosis::of((repeated("<p><x/>", MILLION)).c_str(), 100, 1000, &count).size(),
              100U);
    EXPECT_EQ(count, MILLION + 1);
  });
}

TEST(DiagnosisTest, AMillionDuplicatesAreFound) {
  constexpr std::size_t COUNT = 1000000;
  const std::string text = documentText("<managedObject class='C' distName='A-1'>" +
                                        repeated("<p name='x'/>", COUNT) + "</managedObject>");
  std::size_t count = 0;
  const std::vector<Finding> findings = Diagnosis::of(text.c_str(), 1, 1, &count);
  EXPECT_EQ(count, COUNT - 1);
  EXPECT_EQ(findings.at(0).firstOffset, text.find("<p"));
}

TEST(DiagnosisTest, TextCutAtEveryByteHasTheFaultsBeforeTheCut) {
  PlantedText planted;
  planted.add("<?xml version='1.0'?><tarn xmlns='tarn21.xsd' version='1'><cmData type='plan'>");
  planted.add("<header><log dateTime='d' action='a'>&lt;&#65;</log></header><!-- c -->");
  for (const Fault& fault : OBJECT_FAULTS) planted.plant(fault);
  for (const Fault& fault : PARAMETER_FAULTS) planted.plant(fault, OBJECT);
  planted.add("</cmData></tarn>");
  std::size_t before = 0;
  for (std::size_t size = 0; size < planted.text().size(); ++size) {
    const std::string text = planted.text().substr(0, size);
    expectAgreementWithParse(text);
    if (HasFatalFailure()) return;
    // Besides those of the whole text there is the parser's, and a name that was cut may be
    // unknown.
    std::size_t found = 0;
    std::size_t others = 0;
    const auto& all = planted.expected();
    for (const Finding& each : findingsOf(text)) {
      if (std::find(all.begin(), all.end(), each) != all.end()) {
        ++found;
      } else if (each.message != UNKNOWN) {
        ++others;
      }
    }
    // Nothing is lost again.
    ASSERT_GE(found, before) << text;
    ASSERT_EQ(others, 1U) << text;
    before = found;
  }
  EXPECT_EQ(before, planted.expected().size());
}

// Memory

TEST(DiagnosisTest, EveryAllocationMayFailAndLeavesNothing) {
  PlantedText planted;
  planted.add("<tarn xmlns='x'><cmData type='plan'><header/>");
  for (const Fault& fault : OBJECT_FAULTS) planted.plant(fault);
  for (const Fault& fault : PARAMETER_FAULTS) planted.plant(fault, OBJECT);
  const std::vector<std::string> texts = {planted.text() + "</cmData></tarn>", planted.text()};
  for (const std::string& text : texts) {
    const std::vector<Finding> expected = findingsOf(text);
    std::size_t faults = 0;
    for (bool isDone = false; !isDone; ++faults) {
      ASSERT_LT(faults, 100000U);
      const std::size_t blocks = tarn_test::heapBlocks();
      {
        std::vector<char> copy = vectorOf(text);
        std::vector<Finding> findings;
        bool isRefused = false;
        tarn_test::HeapFault fault(faults + 1);
        try {
          findings = Diagnosis::of(std::move(copy));
        } catch (const std::bad_alloc&) {
          isRefused = true;
        }
        isDone = !fault.happened();
        // A sort does without its buffer.
        if (!isRefused) {
          ASSERT_EQ(findings.size(), expected.size()) << "fault " << faults + 1;
        }
      }
      ASSERT_EQ(tarn_test::heapBlocks(), blocks) << "fault " << faults + 1;
    }
    EXPECT_GT(faults, 100U);
    EXPECT_EQ(findingsOf(text), expected);
  }
}

TEST(DiagnosisTest, MapsMayFail) {
  const std::string text = documentText(repeated("<managedObject class='C'/>", 20000));
  std::size_t faults = 0;
  for (bool isDone = false; !isDone; ++faults) {
    ASSERT_LT(faults, 1000U);
    std::vector<char> copy = vectorOf(text);
    const tarn_test::MapFault fault(faults + 1);
    try {
      const std::size_t found = Diagnosis::of(std::move(copy), 1).size();
      EXPECT_EQ(found, 1U);
    } catch (const std::bad_alloc&) {
    }
    isDone = !fault.happened();
  }
  // Under a sanitizer no map fails, and the first round is the last.
  if (tarn_test::canFailMaps()) {
    EXPECT_GT(faults, 2U);
  } else {
    EXPECT_EQ(faults, 1U);
  }
}

}  // namespace
