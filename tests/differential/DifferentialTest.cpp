// The XML core beside two other parsers: the same tree for well-formed documents that all of them
// read alike, and a test for every intended difference.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <random>

#include "differential/peers.hpp"

namespace {

using tarn_test::parsedByCore;
using tarn_test::parsedByExpat;
using tarn_test::parsedByLibxml2;
using tarn_test::ReferenceElement;

// Well-formed documents at random.
class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  std::string document() {
    std::string text;
    if (pick(2) == 0) text += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    text += between();
    if (pick(4) == 0) text += "<!DOCTYPE root [<!-- > --> <!ENTITY unused \"x\">]>\n";
    return text + element(0) + between();
  }

 private:
  unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

  template <std::size_t Size>
  std::string oneOf(const char* const (&texts)[Size]) {
    return texts[pick(Size)];
  }

  std::string blanks() {
    static const char* const BLANKS[] = {"", " ", "\n", "\t", "  \n "};
    return oneOf(BLANKS);
  }

  std::string name() {
    static const char* const FIRST[] = {"a", "Z", "_", "managedObject", "p", "\xC3\xA9"};
    static const char* const REST[] = {"", "1", "-b", ".c", "_", "long-name-of-sixteen"};
    return oneOf(FIRST) + oneOf(REST);
  }

  // Characters that have the same meaning in attributes and texts, and that no parser changes.
  std::string characters(unsigned most) {
    static const char* const PIECES[] = {"x",
                                         "longer words ",
                                         "&amp;",
                                         "&lt;",
                                         "&gt;",
                                         "&apos;",
                                         "&quot;",
                                         "&#65;",
                                         "&#x20AC;",
                                         "&#128512;",
                                         "]",
                                         ">",
                                         "=",
                                         "/",
                                         "\xE2\x82\xAC",
                                         "\xF0\x9F\x98\x80",
                                         "#",
                                         "0123456789abcdef"};
    std::string text;
    for (unsigned count = pick(most); count > 0; --count) text += oneOf(PIECES);
    // Not allowed in XML.
    for (std::size_t at = 0; (at = text.find("]]", at)) != std::string::npos;) text.erase(at, 1);
    return text;
  }

  std::string attributes() {
    std::string text;
    for (unsigned count = pick(5); count > 0; --count) {
      const char quote = pick(2) == 0 ? '"' : '\'';
      // Different ones, by their number.
      text += " " + blanks() + name() + std::to_string(count) + blanks() + "=" + blanks() + quote +
              characters(6) + (quote == '"' ? "'" : "\"") + quote;
    }
    return text;
  }

  std::string between() {
    static const char* const PIECES[] = {"", "\n", "<!-- a <b> comment -->", "<?pi with > in it?>"};
    return blanks() + oneOf(PIECES) + blanks();
  }

  std::string element(unsigned depth) {
    const std::string tag = name();
    std::string text = "<" + tag + attributes() + blanks();
    if (pick(5) == 0) return text + "/>";
    text += ">";
    for (unsigned count = pick(depth < 6 ? 5 : 1); count > 0; --count) {
      text += pick(2) == 0 ? between() : blanks() + "t" + characters(8) + blanks();
      text += element(depth + 1);
    }
    if (pick(2) == 0) text += blanks() + "." + characters(8) + blanks();
    return text + "</" + tag + blanks() + ">";
  }

  std::mt19937 random_;
};

void expectSameTree(const std::string& text) {
  const auto core = parsedByCore(text);
  const auto libxml2 = parsedByLibxml2(text);
  const auto expat = parsedByExpat(text);
  ASSERT_TRUE(libxml2.has_value()) << text;
  ASSERT_TRUE(expat.has_value()) << text;
  ASSERT_TRUE(core.has_value()) << text;
  ASSERT_TRUE(*core == *libxml2) << text;
  ASSERT_TRUE(*core == *expat) << text;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(DifferentialTest, RandomDocumentsHaveTheSameTree) {
  std::size_t bytes = 0;
  for (unsigned seed = 0; seed < 3000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::string text = Generator(seed).document();
    bytes += text.size();
    ASSERT_NO_FATAL_FAILURE(expectSameTree(text));
  }
  EXPECT_GT(bytes, 1000000U);
}

TEST(DifferentialTest, ExamplesHaveTheSameTree) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("examples")) {
    if (entry.path().extension() != ".xml") continue;
    SCOPED_TRACE(entry.path());
    ASSERT_NO_FATAL_FAILURE(expectSameTree(readFile(entry.path())));
    ++count;
  }
  EXPECT_GT(count, 1U);
}

// All inputs of the fuzz corpus that both other parsers accept, without the differences below.
TEST(DifferentialTest, WellFormedInputsOfTheFuzzTargetsAreTaken) {
  std::size_t count = 0;
  for (const char* const target : {"xml", "load"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path("fuzz/corpus") / target)) {
      SCOPED_TRACE(entry.path());
      const std::string text = readFile(entry.path());
      // A text of the core ends at its first NUL.
      if (text.find('\0') != std::string::npos || !parsedByLibxml2(text) || !parsedByExpat(text)) {
        continue;
      }
      EXPECT_TRUE(parsedByCore(text).has_value());
      ++count;
    }
  }
  EXPECT_GT(count, 5U);
}

// An intended difference.

// Texts that the core accepts and a parser of XML refuses.
struct Accepted {
  const char* what;
  std::string text;
  std::string tag;
  std::string value;
};

void PrintTo(const Accepted& difference, std::ostream* out) { *out << difference.what; }

class AcceptedTest : public testing::TestWithParam<Accepted> {};

TEST_P(AcceptedTest, IsTakenByTheCoreAlone) {
  const Accepted& difference = GetParam();
  const auto core = parsedByCore(difference.text);
  ASSERT_TRUE(core.has_value());
  EXPECT_EQ(core->tag, difference.tag);
  EXPECT_EQ(core->value, difference.value);
  EXPECT_FALSE(parsedByLibxml2(difference.text).has_value());
  EXPECT_FALSE(parsedByExpat(difference.text).has_value());
}

INSTANTIATE_TEST_SUITE_P(
    DifferentialTest, AcceptedTest,
    testing::Values(Accepted{"EndTagOfAnotherName", "<a>x</b>", "a", "x"},
                    Accepted{"NoElement", " ", "", ""},
                    Accepted{"SeveralRoots", "<a>x</a><b/>", "a", "x"},
                    Accepted{"AttributeTwice", "<a b='1' b='2'>x</a>", "a", "x"},
                    Accepted{"UnknownEntity", "<a>&x;</a>", "a", "&x;"},
                    Accepted{"LoneAmpersand", "<a>x & y</a>", "a", "x & y"},
                    Accepted{"OpenTagInValue", "<a b='<'>x</a>", "a", "x"},
                    Accepted{"NoBlankBetweenAttributes", "<a b='1'c='2'>x</a>", "a", "x"},
                    Accepted{"NameOfAnyBytes", "<1+&\"'=<>x</1>", "1+&\"'=<", "x"},
                    Accepted{"ControlCharacter", "<a>\x01</a>", "a", "\x01"},
                    Accepted{"MalformedUtf8", "<a>\xFF\xC0</a>", "a", "\xFF\xC0"},
                    Accepted{"EndOfCdataInText", "<a>]]></a>", "a", "]]>"},
                    Accepted{"DashesInComment", "<a><!-- -- -->x</a>", "a", "x"},
                    Accepted{"ReferenceToSurrogate", "<a>&#xD800;</a>", "a", "\xED\xA0\x80"},
                    Accepted{"ReferenceToControlCharacter", "<a>&#1;</a>", "a", "\x01"},
                    Accepted{"DeclarationWithin", "<a><?xml version='1.0'?>x</a>", "a", "x"},
                    Accepted{"DeclarationInCapitals", "<?XML version='1.0'?><a>x</a>", "a", "x"},
                    Accepted{"UnknownMarkup", "<a><!x>y</a>", "a", "y"},
                    Accepted{"MalformedDoctype", "<!DOCTYPE [>]><a>x</a>", "a", "x"}),
    [](const auto& each) { return std::string(each.param.what); });

// Texts that all of them accept, but for which the core has another tree. The value of "a", and of
// its attribute "b" if there is one, in the core and in the others.
struct Different {
  const char* what;
  std::string text;
  std::string core;
  std::string others;
};

void PrintTo(const Different& difference, std::ostream* out) { *out << difference.what; }

class DifferentTest : public testing::TestWithParam<Different> {};

std::string seenIn(const ReferenceElement& element) {
  return element.attribute("b") ? element.attributeOr("b") : element.tag + ":" + element.value;
}

TEST_P(DifferentTest, HasAnotherTreeInTheCore) {
  const Different& difference = GetParam();
  EXPECT_EQ(seenIn(parsedByCore(difference.text).value()), difference.core);
  EXPECT_EQ(seenIn(parsedByExpat(difference.text).value()), difference.others);
}

INSTANTIATE_TEST_SUITE_P(
    DifferentialTest, DifferentTest,
    testing::Values(Different{"CdataIsDropped", "<a><![CDATA[x]]></a>", "a:", "a:x"},
                    Different{"BlanksInAttributeStay", "<a b='x\ty\nz'/>", "x\ty\nz", "x y z"},
                    Different{"LineEndsStay", "<a>x\r\ny</a>", "a:x\r\ny", "a:x\ny"},
                    Different{"EntitiesOfTheDocumentStay",
                              "<!DOCTYPE a [<!ENTITY e 'x'>]><a>&e;</a>", "a:&e;", "a:x"},
                    Different{"DefaultsOfTheDocumentTypeAreNotSet",
                              "<!DOCTYPE a [<!ATTLIST a b CDATA 'x'>]><a>y</a>", "a:y", "x"},
                    // A blank that is written as a reference is a text.
                    Different{"BlankReferenceIsAValue", "<a>&#32;</a>", "a: ", "a:"}),
    [](const auto& each) { return std::string(each.param.what); });

// Texts that the others accept and the core refuses.
TEST(DifferentialTest, QuestionMarkEndsANameOfTheCore) {
  // Names of XML have none, and the core needs it to end a declaration.
  EXPECT_FALSE(parsedByCore("<a?b/>").has_value());
  EXPECT_FALSE(parsedByExpat("<a?b/>").has_value());
}

TEST(DifferentialTest, CoreReadsUpToANul) {
  const std::string text("<a>x</a>\0<b", 11);
  EXPECT_TRUE(parsedByCore(text).has_value());
  EXPECT_FALSE(parsedByExpat(text).has_value());
}

TEST(DifferentialTest, OnlyUtf8IsReadByTheCore) {
  const std::string text("\xFF\xFE<\0a\0/\0>\0", 10);
  EXPECT_FALSE(parsedByCore(text).has_value());
  EXPECT_TRUE(parsedByExpat(text).has_value());
}

}  // namespace
