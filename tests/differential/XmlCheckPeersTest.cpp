// The second reading beside two other parsers: without a document type it finds nothing exactly in
// those texts that they accept, and every difference that is meant is shown, one by one.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "differential/peers.hpp"
#include "libtarn/util/XmlCheck.hpp"

namespace {

using libtarn::util::checkXml;
using Kind = libtarn::util::XmlFault::Kind;
using tarn_test::parsedByExpat;
using tarn_test::parsedByLibxml2;

std::string firstFault(const std::string& text) {
  const libtarn::util::XmlFaults faults = checkXml(text);
  if (faults.list.empty()) return "no fault";
  return std::to_string(faults.list[0].offset) + ": " + faults.list[0].message;
}

bool isClean(const std::string& text) { return checkXml(text, 0).count == 0; }
bool isAcceptedByExpat(const std::string& text) { return parsedByExpat(text).has_value(); }
bool isAcceptedByLibxml2(const std::string& text) { return parsedByLibxml2(text).has_value(); }

const std::vector<std::string>& documents() {
  static const std::vector<std::string> texts = {
      "<a/>",
      "<a b='1' c=\"2\"><d>x</d><d>y</d></a>",
      "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8' standalone='yes'?><a>\xE2\x82\xAC</a>\n",
      "<?xml version=\"1.0\"?>\n<!-- c --><?p?><a x=\"y\"><p n='n'>&amp;&#65;&#x20AC; b</p></a>\n",
      "<a><list name='l'><p>1</p><p/></list><![CDATA[<]]><?pi t?></a>\n<!-- end -->",
      "<a><b><c><d e='&lt;\"&gt;'>]] &gt;</d></c></b>\xC3\xA9\xF0\x9F\x98\x80</a>",
      "<?xml version='1.0' encoding='us-ascii'?><a b = '1'\n c='2' ><!----><?p?></a >",
  };
  return texts;
}

// Pieces that begin, end or break something.
const std::vector<std::string>& pieces() {
  using namespace std::string_literals;
  static const std::vector<std::string> texts = {"<",
                                                 ">",
                                                 "/",
                                                 "</",
                                                 "/>",
                                                 "'",
                                                 "\"",
                                                 "=",
                                                 " ",
                                                 "\n",
                                                 "&",
                                                 ";",
                                                 "#",
                                                 "&#",
                                                 "&#x1;",
                                                 "&#xD800;",
                                                 "&#65534;",
                                                 "&#x10FFFF;",
                                                 "&#x110000;",
                                                 "&#4294967361;",
                                                 "&lt;",
                                                 "&x;",
                                                 "!",
                                                 "?",
                                                 "<?",
                                                 "?>",
                                                 "<?xml ",
                                                 "<?XML ?>",
                                                 "<?xml version='1.0'?>",
                                                 "<!--",
                                                 "--",
                                                 "-",
                                                 "-->",
                                                 "<![CDATA[",
                                                 "]]>",
                                                 "]",
                                                 "[",
                                                 "<a>",
                                                 "</a>",
                                                 "<b/>",
                                                 "<1>",
                                                 "a='1'",
                                                 " b='1'",
                                                 "a",
                                                 "1",
                                                 ".",
                                                 ":",
                                                 "\x01",
                                                 "\x7F",
                                                 "\0"s,
                                                 "\xC3\xA9",
                                                 "\xC2\x85",
                                                 "\xEF\xBF\xBE",
                                                 "\xED\xA0\x80",
                                                 "\xED\x9F\xBF",
                                                 "\xEE\x80\x80",
                                                 "\xC0\x80",
                                                 "\xE0\x80\x80",
                                                 "\xF0\x8F\xBF\xBF",
                                                 "\xF0\x90\x80\x80",
                                                 "\xF4\x8F\xBF\xBF",
                                                 "\xF4\x90\x80\x80",
                                                 "\xF5",
                                                 "\x80",
                                                 "\xE2\x82",
                                                 "version",
                                                 "encoding",
                                                 "standalone",
                                                 "xml"};
  return texts;
}

std::string mutated(std::string text, std::mt19937& random) {
  const auto pick = [&random](std::size_t count) { return random() % count; };
  for (std::size_t count = 1 + pick(3); count > 0; --count) {
    const std::size_t at = pick(text.size() + 1);
    const std::size_t length = pick(2) == 0 ? pick(3) : pick(text.size() - at + 1);
    switch (pick(4)) {
      case 0:
        text.erase(at, length);
        break;
      case 1:
        text.insert(pick(text.size() + 1), text.substr(at, length));
        break;
      default:
        text.replace(at, pick(2), pieces()[pick(pieces().size())]);
    }
  }
  return text;
}

bool contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

bool isInUtf8(const std::string& text) {
  for (const libtarn::util::XmlFault& fault : checkXml(text).list) {
    if (fault.kind == Kind::Encoding) return false;
  }
  return true;
}

// With every letter of several bytes replaced by one that may be in names in all editions: expat
// does not follow the fifth. `text` is well-formed.
std::string withOlderLetters(const std::string& text) {
  const std::string mark = text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? text.substr(0, 3) : "";
  std::string result = mark;
  for (std::size_t at = mark.size(); at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte < 0x80) result += text[at];
    if (byte >= 0xC0) result += "\xC3\xA9";
  }
  return result;
}

// What expat does not look at, and nothing else.
bool hasWrongVersionOnly(const std::string& text) {
  const libtarn::util::XmlFaults faults = checkXml(text);
  return faults.count == 1 && faults.list[0].kind == Kind::MalformedDeclaration &&
         contains(faults.list[0].message, "version");
}

// Empty when the answers are the same, or differ as they should.
std::string difference(const std::string& text) {
  const bool isAccepted = isAcceptedByExpat(text);
  if (isClean(text)) {
    if (!isAcceptedByLibxml2(text)) return "libxml2 refuses it";
    return isAccepted || isAcceptedByExpat(withOlderLetters(text)) ? "" : "expat refuses it";
  }
  return !isAccepted || hasWrongVersionOnly(text) ? "" : "expat accepts it: " + firstFault(text);
}

TEST(XmlCheckPeersTest, DocumentsAreAccepted) {
  for (const std::string& text : documents()) {
    EXPECT_EQ(firstFault(text), "no fault") << text;
    EXPECT_EQ(difference(text), "") << text;
  }
}

TEST(XmlCheckPeersTest, PrefixesOfDocuments) {
  for (const std::string& text : documents()) {
    for (std::size_t size = 0; size < text.size(); ++size) {
      EXPECT_EQ(difference(text.substr(0, size)), "") << text.substr(0, size);
    }
  }
}

TEST(XmlCheckPeersTest, MutatedDocuments) {
  constexpr unsigned DOCUMENTS = 100000;
  std::size_t accepted = 0;
  for (unsigned seed = 0; seed < DOCUMENTS; ++seed) {
    std::mt19937 random(seed);
    const std::string text = mutated(documents()[seed % documents().size()], random);
    accepted += isClean(text) ? 1U : 0U;
    EXPECT_EQ(difference(text), "") << "seed " << seed << ": " << text;
  }
  // Neither side is hardly ever seen.
  EXPECT_GT(accepted, DOCUMENTS / 20);
  EXPECT_LT(accepted, DOCUMENTS - DOCUMENTS / 20);
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(XmlCheckPeersTest, InputsOfTheFuzzTargets) {
  std::size_t count = 0;
  for (const char* const target : {"xml", "load", "strict"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(std::filesystem::path("fuzz/corpus") / target)) {
      const std::string text = readFile(entry.path());
      if (contains(text, "<!DOCTYPE") || !isInUtf8(text)) continue;
      EXPECT_EQ(difference(text), "") << entry.path();
      ++count;
    }
  }
  EXPECT_GT(count, 20U);
}

// A difference that is meant: what each of the three says to a text.
struct Difference {
  const char* what;
  std::string text;
  bool isClean;
  bool isAcceptedByExpat;
  bool isAcceptedByLibxml2;
};

void PrintTo(const Difference& difference, std::ostream* out) { *out << difference.what; }

class XmlCheckDifferenceTest : public testing::TestWithParam<Difference> {};

TEST_P(XmlCheckDifferenceTest, IsAsListed) {
  const Difference& difference = GetParam();
  EXPECT_EQ(isClean(difference.text), difference.isClean) << firstFault(difference.text);
  EXPECT_EQ(isAcceptedByExpat(difference.text), difference.isAcceptedByExpat);
  EXPECT_EQ(isAcceptedByLibxml2(difference.text), difference.isAcceptedByLibxml2);
}

constexpr bool YES = true;
constexpr bool NO = false;

INSTANTIATE_TEST_SUITE_P(
    XmlCheckPeersTest, XmlCheckDifferenceTest,
    testing::Values(
        // Other tools need not know the encoding.
        Difference{"OtherEncoding", "<?xml version='1.0' encoding='ISO-8859-1'?><a/>", NO, YES,
                   YES},
        Difference{"Utf16", std::string("\xFF\xFE<\0a\0/\0>\0", 10), NO, YES, YES},
        // expat.
        Difference{"NameOfFifthEdition", "<\xF0\x90\x80\x80/>", YES, NO, YES},
        Difference{"VersionOfAnyText", "<?xml version='x'?><a/>", NO, YES, NO},
        Difference{"VersionTwo", "<?xml version='2.0'?><a/>", NO, YES, NO},
        // libxml2.
        Difference{"EncodingByAnotherName", "<?xml version='1.0' encoding='UTF8'?><a/>", NO, NO,
                   YES},
        Difference{"NoBlankInDeclaration",
                   "<?xml version='1.0' encoding='UTF-8'standalone='yes'?><a/>", NO, NO, YES},
        Difference{"NulAfterRoot", std::string("<a/>\0", 5), NO, NO, YES},
        // Of a document type only the nesting is read.
        Difference{"MalformedDeclarationInDoctype", "<!DOCTYPE a [<!ELEMENT>]><a/>", YES, NO, NO},
        Difference{"UndeclaredEntityWithDoctype", "<!DOCTYPE a []><a>&x;</a>", YES, NO, NO},
        Difference{"MalformedEntity", "<!DOCTYPE a [<!ENTITY x '<b>'>]><a>&x;</a>", YES, NO, NO}),
    [](const auto& each) { return std::string(each.param.what); });

}  // namespace
