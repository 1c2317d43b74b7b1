#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "libtarn/DomDocument.hpp"
#include "rapidxml/scan.hpp"
#include "support/TextAtTheEdge.hpp"

namespace {

using namespace rapidxml::internal;
using tarn_test::TextAtTheEdge;

template <class Block>
class ScannerTest : public ::testing::Test {
 protected:
  // Scans `text` from its start to its end, by runs of `Class` and single characters in between.
  template <class Class>
  static void expectSameRuns(const std::string& text) {
    TextAtTheEdge edge(text);
    basic_scanner<Block> scanner(edge.text());
    char* cursor = edge.text();
    while (*cursor != '\0') {
      char* expected = cursor;
      while (contains<Class>(*expected)) ++expected;
      ASSERT_EQ(scanner.template end_of<Class>(cursor) - edge.text(), expected - edge.text())
          << "from " << cursor - edge.text() << " of " << text.size();
      cursor = *expected == '\0' ? expected : expected + 1;
    }
    EXPECT_EQ(scanner.template end_of<Class>(cursor), cursor);
  }

  static void expectSameRunsOfAllClasses(const std::string& text) {
    expectSameRuns<whitespace>(text);
    expectSameRuns<node_name>(text);
    expectSameRuns<attribute_name>(text);
    expectSameRuns<without_references<rapidxml::internal::text>>(text);
    expectSameRuns<without_references<single_quoted>>(text);
    expectSameRuns<without_references<double_quoted>>(text);
  }
};

struct BlockNames {
  template <class Block>
  static std::string GetName(int index) {
    return std::to_string(8 * Block::size) + "Bits" + std::to_string(index);
  }
};

using Blocks = ::testing::Types<word_block, wide_block>;
TYPED_TEST_SUITE(ScannerTest, Blocks, BlockNames);

TYPED_TEST(ScannerTest, RunsEndWhereASearchByteByByteEnds) {
  std::mt19937 random(21);
  const std::string characters = "ab ab \t\n\r<&'\"=/>?!xyzxyz\x01\x7f\x80\xff";
  for (int round = 0; round < 400; ++round) {
    SCOPED_TRACE("seed 21, round " + std::to_string(round));
    // With few different characters, runs are long.
    const std::size_t kinds = 1 + random() % characters.size();
    std::string text(random() % 300, ' ');
    for (char& c : text)
      c = characters[(random() % kinds + static_cast<std::size_t>(round)) % characters.size()];
    this->expectSameRunsOfAllClasses(text);
    if (this->HasFatalFailure()) return;
  }
}

TYPED_TEST(ScannerTest, LongRunsAroundTheStepsOfMeasuring) {
  for (const std::size_t size :
       {15U, 16U, 17U, 4080U, 4095U, 4096U, 4097U, 4112U, 8191U, 8192U, 20000U}) {
    SCOPED_TRACE(size);
    this->expectSameRunsOfAllClasses(std::string(size, 'a'));
    this->expectSameRunsOfAllClasses(std::string(size, ' '));
    this->expectSameRunsOfAllClasses(std::string(size, 'a') + "<b>" + std::string(size, ' '));
  }
}

TYPED_TEST(ScannerTest, CursorsMayJumpOverTextThatWasNotMeasured) {
  TextAtTheEdge edge(std::string(10000, '-') + "abc<" + std::string(30, 'd'));
  basic_scanner<TypeParam> scanner(edge.text());
  using Text = without_references<rapidxml::internal::text>;
  EXPECT_EQ(scanner.template end_of<Text>(edge.text() + 10000), edge.text() + 10003);
  EXPECT_EQ(scanner.template end_of<Text>(edge.text() + 10004), edge.text() + 10034);
}

// Every byte value at every position of a block.
TYPED_TEST(ScannerTest, MasksMarkExactlyTheBytesThatMatch) {
  for (int byte = 0; byte < 256; ++byte) {
    for (std::size_t place = 0; place < TypeParam::size; ++place) {
      for (const char filler : {'x', '\x80', '\xff', '=', '<'}) {
        std::string text(TypeParam::size, filler);
        text[place] = static_cast<char>(byte);
        const TypeParam block(text.data());
        for (const char wanted : {'<', '>', '?', '\0'}) {
          const auto equal = block.equal(wanted);
          const std::size_t found = text.find(wanted);
          ASSERT_EQ(TypeParam::any(equal), found != std::string::npos);
          if (found != std::string::npos) {
            ASSERT_EQ(TypeParam::first(equal), found);
          }
        }
        const auto small = block.at_most('?');
        std::size_t found = 0;
        while (found < text.size() && static_cast<unsigned char>(text[found]) > '?') ++found;
        ASSERT_EQ(TypeParam::any(small), found < text.size());
        if (found < text.size()) {
          ASSERT_EQ(TypeParam::first(small), found);
        }
      }
    }
  }
}

TEST(ParserAtTheEdgeTest, NothingAfterTheTerminatingNulIsRead) {
  const std::string document =
      "<?xml version='1.0'?><!-- c --><a b=\"1\" cc='22'>text &amp; more<d  e = \"f\" />  "
      "<g>h</g></a> ";
  const std::size_t declarationEnd = document.find("<!--");
  const std::size_t commentEnd = document.find("<a ");
  const std::size_t rootEnd = document.size() - 1;
  for (std::size_t size = 0; size <= document.size(); ++size) {
    TextAtTheEdge edge(document.substr(0, size));
    libDomXml::DomDocument dom(false);
    const bool isWhole =
        size == 0 || size == declarationEnd || size == commentEnd || size >= rootEnd;
    EXPECT_EQ(dom.rapidParse(edge.text()) == 0, isWhole) << size;
  }
  for (const std::size_t padding : {0U, 1U, 4000U, 4095U, 4096U, 4097U, 9000U}) {
    TextAtTheEdge edge("<a>" + std::string(padding, 'x') + "</a>");
    libDomXml::DomDocument dom(false);
    ASSERT_EQ(dom.rapidParse(edge.text()), 0);
    EXPECT_EQ(std::strlen(dom.getFirstChild("a")->getValue()), padding);
  }
}

}  // namespace
