#include <gtest/gtest.h>

#include <iterator>
#include <string>

#include "libtarn/rapidxml/rapidxml.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"

namespace {

using namespace rapidxml;

std::string printed(std::string text, int flags = 0, int indent = 0) {
  xml_document<char> document;
  char* cursor = text.data();
  document.parse<33>(cursor);
  std::string out;
  print_node(out, &document, flags, indent);
  std::string byIterator;
  print_node(std::back_inserter(byIterator), &document, flags, indent);
  EXPECT_EQ(out, byIterator);
  return out;
}

TEST(PrinterTest, EmptyElementIsStartTagAndEndTag) {
  EXPECT_EQ(printed("<p name='x'/>"), "<p name=\"x\"></p>\n\n");
}

TEST(PrinterTest, NamesOfEveryLength) {
  for (std::size_t size = 1; size < 40; ++size) {
    const std::string name(size, 'n');
    EXPECT_EQ(printed("<" + name + " " + name + "='x'/>"),
              "<" + name + " " + name + "=\"x\"></" + name + ">\n\n");
  }
}

TEST(PrinterTest, ElementsAreIndentedBySpacesAndOtherNodesByTabs) {
  EXPECT_EQ(printed("<a><b><c><d>x</d></c></b></a>"),
            "<a>\n <b>\n  <c>\n   <d>x</d>\n  </c>\n </b>\n</a>\n\n");
  EXPECT_EQ(printed("<a><b><?xml v='1'?></b></a>"),
            "<a>\n <b>\n\t\t<?xml v=\"1\"?>\n </b>\n</a>\n\n");
}

TEST(PrinterTest, SpecialCharactersOfValuesBecomeReferences) {
  EXPECT_EQ(printed("<a>a&lt;b &amp; 'c'</a>"), "<a>a&lt;b &amp; &apos;c&apos;</a>\n\n");
  EXPECT_EQ(printed("<a>&quot;></a>"), "<a>&quot;&gt;</a>\n\n");
}

TEST(PrinterTest, AttributeWithDoubleQuoteIsPrintedInSingleQuotes) {
  EXPECT_EQ(printed("<a x='1\"2&apos;3&lt;'/>"), "<a x='1\"2&apos;3&lt;'></a>\n\n");
  EXPECT_EQ(printed("<a x=\"1'2\"/>"), "<a x=\"1'2\"></a>\n\n");
}

TEST(PrinterTest, ElementWithValueAndChildrenPrintsOnlyTheChildren) {
  EXPECT_EQ(printed("<a>x<b/></a>"), "<a>\n <b></b>\n</a>\n\n");
}

TEST(PrinterTest, WithoutIndentingThereAreNoLineBreaks) {
  EXPECT_EQ(printed("<?xml v='1'?><a><b>x</b><c/></a>", print_no_indenting),
            "<?xml v=\"1\"?><a><b>x</b><c></c></a>");
}

TEST(PrinterTest, EmptyDocumentIsOneLineFeed) { EXPECT_EQ(printed(""), "\n"); }

TEST(PrinterTest, DepthStartsAtTheGivenIndent) {
  EXPECT_EQ(printed("<a><b/></a>", 0, 2), "  <a>\n   <b></b>\n  </a>\n\n");
}

TEST(PrinterTest, NodesOfEveryKindHaveTheirForm) {
  xml_document<char> document;
  const auto add = [&document](xml_node<char>* parent, node_type type, const char* name,
                               const char* value) {
    auto* const node = document.allocate_node(type, name, value, 0, 0);
    parent->append_node(node);
    return node;
  };
  auto* const root = add(&document, node_element, "r", nullptr);
  add(root, node_data, nullptr, "d<");
  add(root, node_cdata, nullptr, "c<");
  add(root, node_comment, nullptr, "m<");
  add(root, node_doctype, nullptr, "t");
  add(root, node_pi, "p", "v");
  auto* const onlyData = add(root, node_element, "e", "ignored");
  add(onlyData, node_data, nullptr, "x&");
  std::string out;
  print_node(out, &document, 0, 0);
  EXPECT_EQ(out,
            "<r>\n\td&lt;\n\t<![CDATA[c<]]>\n\t<!--m<-->\n\t<!DOCTYPE t>\n\t<?p v?>\n"
            " <e>x&amp;</e>\n</r>\n\n");
}

TEST(PrinterTest, UnsetNamesPrintAsNothing) {
  xml_document<char> document;
  auto* const element = document.allocate_node(node_element, nullptr, nullptr, 0, 0);
  element->append_attribute(document.allocate_attribute(nullptr, nullptr, 0, 0));
  std::string out;
  print_node(out, element, 0, 0);
  EXPECT_EQ(out, "< =\"\"></>\n");
}

TEST(PrinterTest, PrintElementNodeLeavesOutTheLastLineFeed) {
  std::string text = "<a><b/></a>";
  xml_document<char> document;
  char* cursor = text.data();
  document.parse<33>(cursor);
  std::string out;
  print_element_node(std::back_inserter(out), document.first_node(), 0, 1);
  EXPECT_EQ(out, " <a>\n  <b></b>\n </a>");
  EXPECT_DEATH(print_element_node(std::back_inserter(out), &document, 0, 0),
               "assertion failed: node->type\\(\\) == node_element");
}

TEST(PrinterTest, KindBeyondTheLastIsAnAssertion) {
  xml_document<char> document;
  auto* const node = document.allocate_node(static_cast<node_type>(8), nullptr, nullptr, 0, 0);
  std::string out;
  EXPECT_DEATH(print_node(out, node, 0, 0), "assertion failed: 0");
}

TEST(PrinterTest, CopyAndExpandLeavesTheExemptCharacter) {
  const std::string text = "a&<>'\"\x80";
  std::string out;
  copy_and_expand_chars(text.data(), text.data() + text.size(), '\'', std::back_inserter(out));
  EXPECT_EQ(out, "a&amp;&lt;&gt;'&quot;\x80");
  out.clear();
  copy_and_expand_chars(text.data(), text.data() + text.size(), '\0', std::back_inserter(out));
  EXPECT_EQ(out, "a&amp;&lt;&gt;&apos;&quot;\x80");
}

}  // namespace
