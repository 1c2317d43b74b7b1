#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "libtarn/rapidxml/rapidxml_print.hpp"
#include "support/SmallStack.hpp"
#include "support/treeDump.hpp"

namespace {

using rapidxml::parse_error;
using rapidxml::xml_document;

std::string parsedTree(std::string text) {
  xml_document<char> document;
  char* cursor = text.data();
  document.parse<33>(cursor);
  EXPECT_EQ(cursor, text.data() + text.size());
  return tarn_test::dump(document);
}

struct TreeCase {
  const char* text;
  const char* tree;
};

TEST(ParserTest, TextsGiveTheirTrees) {
  const TreeCase cases[] = {
      {"", ""},
      {" \t\r\n", ""},
      {"\xEF\xBB\xBF", ""},
      {"\xEF\xBB\xBF \n<a/>", "{a}"},
      {"<a/>", "{a}"},
      {"<a />", "{a}"},
      {"<a></a>", "{a}"},
      {"<a></b>", "{a}"},
      {"<a></>", "{a}"},
      {"<a></a \n>", "{a}"},
      {"<a/><b/>", "{a b}"},
      {"<a>  x  </a>", "{a\"  x  \"}"},
      {"<a> <b/> </a>", "{a{b}}"},
      {"<a>x<b/>y</a>", "{a\"x\"{b}}"},
      {"<a><b/> y </a>", "{a\" y \"{b}}"},
      {"<a>x<!-- -->y</a>", "{a\"x\"}"},
      {"<a><![CDATA[x]]></a>", "{a}"},
      {"<a>x<![CDATA[<b>]]]>]]>y</a>", "{a\"x\"}"},
      {"<a x='1' y = \"2\"\n\tz='3'/>", "{a(x=1 y=2 z=3)}"},
      {"<a x='1'y='2'/>", "{a(x=1 y=2)}"},
      {"<a x='1' x='2'/>", "{a(x=1 x=2)}"},
      {"<a x='<\">&'/>", "{a(x=<\">&)}"},
      {"<a x=\"'\"/>", "{a(x=')}"},
      {"<a x=''/>", "{a(x=)}"},
      {"<a  x  =  '1'  />", "{a(x=1)}"},
      {"<a\"b='c'/>", "{a\"b='c'}"},
      {"<a<b>x</a>", "{a<b\"x\"}"},
      {"<a b\"c='d'/>", "{a(b\"c=d)}"},
      {"<?xml version='1.0'?><a/>", "{?xml(version=1.0) a}"},
      {"<?XmL\tversion='1.0' ?><a/>", "{?xml(version=1.0) a}"},
      {"<?xml ?><a/>", "{?xml a}"},
      {"<?xml?><a/>", "{a}"},
      {"<?xml-stylesheet href='x'?><a/>", "{a}"},
      {"<?pi > ?x ?><a/>", "{a}"},
      {"<?"
       "?><a/>",
       "{a}"},
      {"<a><?xml x='1'?></a>", "{a{?xml(x=1)}}"},
      {"<!-- > - -- --><a/>", "{a}"},
      {"<!----><a/>", "{a}"},
      {"<!DOCTYPE a><a/>", "{a}"},
      {"<!DOCTYPE a [<!ELEMENT a (b>c)> [ ] > ] ><a/>", "{a}"},
      {"<!DOCTYPE ]]><a/>", "{a}"},
      {"<!DOCTYPE><a/>", "{a}"},
      {"<!ELEMENT a><a/>", "{a}"},
      {"<!><a/>", "{a}"},
      {"<a>&amp;&apos;&quot;&lt;&gt;</a>", "{a\"&'\"<>\"}"},
      {"<a x='&amp;&apos;&quot;&lt;&gt;'/>", "{a(x=&'\"<>)}"},
      {"<a>&unknown;&amp &;&AMP;&</a>", "{a\"&unknown;&amp &;&AMP;&\"}"},
      {"<a>&#65;&#x41;&#x6a;&#X41;</a>", "{a\"AAj&#X41;\"}"},
      {"<a>&#;&#x;&#z;&#xg;&#</a>", "{a\"&#;&#x;&#z;&#xg;&#\"}"},
      {"<a>&#127;&#128;&#2047;&#2048;</a>", "{a\"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\"}"},
      {"<a>&#65535;&#65536;&#1114111;</a>", "{a\"\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF\"}"},
      {"<a>&#000000000000000000000065;</a>", "{a\"A\"}"},
      {"<a>&#0;</a>", "{a\"0\"}"},
      {"<a>&amp;amp;</a>", "{a\"&amp;\"}"},
      {"<a>&#38;lt;</a>", "{a\"&lt;\"}"},
      {"<\xC3\xA9 \xC3\xA8='\xFF'>\x80</\xC3\xA9>", "{\xC3\xA9(\xC3\xA8=\xFF)\"\x80\"}"},
  };
  for (const TreeCase& c : cases) EXPECT_EQ(parsedTree(c.text), c.tree) << c.text;
}

struct FaultCase {
  const char* text;
  const char* message;
  std::ptrdiff_t offset;
};

TEST(ParserTest, FaultsAreReportedWithTheirPlace) {
  const FaultCase cases[] = {
      {"x", "expected <", 0},
      {" <a/> x", "expected <", 6},
      {"\xEF\xBB\xBFx", "expected <", 3},
      {"<a/>&", "expected <", 4},
      {"<", "expected element name", 1},
      {"< a/>", "expected element name", 1},
      {"</a>", "expected element name", 1},
      {"<>", "expected element name", 1},
      {"<a><", "expected element name", 4},
      {"<a", "expected >", 2},
      {"<a ", "expected >", 3},
      {"<a?", "expected >", 2},
      {"<a/", "expected >", 3},
      {"<a/ >", "expected >", 3},
      {"<a !>", "expected >", 3},
      {"<a =''/>", "expected >", 3},
      {"<a x", "expected =", 4},
      {"<a x>", "expected =", 4},
      {"<a x y='1'>", "expected =", 5},
      {"<a x=1>", "expected ' or \"", 5},
      {"<a x=", "expected ' or \"", 5},
      {"<a x='1", "expected ' or \"", 7},
      {"<a x='1\"/>", "expected ' or \"", 10},
      {"<a>", "unexpected end of data", 3},
      {"<a> ", "unexpected end of data", 4},
      {"<a>x", "unexpected end of data", 4},
      {"<a>x&amp;", "unexpected end of data", 9},
      {"<a></a", "expected >", 6},
      {"<a></a x>", "expected >", 7},
      {"<a></", "expected >", 5},
      {"<!-->", "unexpected end of data", 5},
      {"<!--->", "unexpected end of data", 6},
      {"<!-- --", "unexpected end of data", 7},
      {"<![CDATA[ ]]", "unexpected end of data", 12},
      {"<![CDATA[]>", "unexpected end of data", 11},
      {"<!DOCTYPE a [ >", "unexpected end of data", 15},
      {"<!x", "unexpected end of data", 3},
      {"<!", "unexpected end of data", 2},
      {"<?>", "unexpected end of data", 3},
      {"<?pi", "unexpected end of data", 4},
      {"<?xml x='1'>", "expected ?>", 11},
      {"<?xml x='1' ", "expected ?>", 12},
      {"<?xml ? >", "expected ?>", 6},
      {"<?xml x?>", "expected =", 7},
      {"<a>&#1114112;</a>", "invalid numeric character entity", 12},
      {"<a>&#1114112</a>", "invalid numeric character entity", 12},
      {"<a>&#x110000;</a>", "invalid numeric character entity", 12},
      {"<a>&#99999999999999999999;</a>", "invalid numeric character entity", 25},
      {"<a>&#4294967361;</a>", "invalid numeric character entity", 15},
      {"<a>&#11141110;</a>", "invalid numeric character entity", 13},
      {"<a>&#65</a>", "expected ;", 7},
      {"<a>&#x4g;</a>", "expected ;", 7},
      {"<a x='&#65'/>", "expected ;", 10},
  };
  for (const FaultCase& c : cases) {
    std::string text = c.text;
    xml_document<char> document;
    char* cursor = text.data();
    try {
      document.parse<33>(cursor);
      ADD_FAILURE() << c.text << " parses";
    } catch (const parse_error& error) {
      EXPECT_STREQ(error.what(), c.message) << c.text;
      EXPECT_EQ(error.where<char>() - text.data(), c.offset) << c.text;
    }
  }
}

TEST(ParserTest, NullTextIsAnAssertion) {
  xml_document<char> document;
  char* cursor = nullptr;
  EXPECT_DEATH(document.parse<33>(cursor), "assertion failed: text");
}

TEST(ParserTest, AttributeNameEndsWhereTheNameEnds) {
  std::string text = "<a name \t= '1'/>";
  xml_document<char> document;
  char* cursor = text.data();
  document.parse<33>(cursor);
  EXPECT_STREQ(document.first_node()->first_attribute()->name(), "name");
  // A NUL has replaced the equal sign.
  EXPECT_EQ(text.find('='), std::string::npos);
}

TEST(ParserTest, NamesAndValuesAreTerminatedAndLieInTheText) {
  std::string text = "<a x='1&amp;2'>t&lt;u<b/></a>";
  const char* const end = text.data() + text.size();
  xml_document<char> document;
  char* cursor = text.data();
  document.parse<33>(cursor);
  const auto* const a = document.first_node();
  EXPECT_STREQ(a->name(), "a");
  EXPECT_STREQ(a->value(), "t<u");
  EXPECT_STREQ(a->first_attribute()->value(), "1&2");
  EXPECT_STREQ(a->first_node()->name(), "b");
  EXPECT_TRUE(a->value() > text.data() && a->value() < end);
}

TEST(ParserTest, CompleteNodesStayLinkedAfterAFaultAndOpenOnesAreDetached) {
  std::string text = "<a/><b><c/><d>";
  xml_document<char> document;
  char* cursor = text.data();
  EXPECT_THROW(document.parse<33>(cursor), parse_error);
  EXPECT_EQ(tarn_test::dump(document), "{a}");
}

TEST(ParserTest, OpenElementsAreLeftDetachedAndWithoutTheBlanksAfterTheirTag) {
  struct Keeping : xml_document<char> {
    std::vector<rapidxml::xml_node<char>*> made;
    rapidxml::xml_node<char>* allocate_node(rapidxml::node_type type, const char* name,
                                            const char* value, std::size_t nameSize,
                                            std::size_t valueSize) override {
      made.push_back(xml_document::allocate_node(type, name, value, nameSize, valueSize));
      return made.back();
    }
  };
  Keeping document;
  std::string text = "<a><b><c> ";
  char* cursor = text.data();
  EXPECT_THROW(document.parse<33>(cursor), parse_error);
  ASSERT_EQ(document.made.size(), 3U);
  for (const auto* element : document.made) {
    EXPECT_EQ(element->parent(), nullptr);
    EXPECT_EQ(element->value_size(), 0U);
    EXPECT_STREQ(element->value(), "");
  }
}

// A host's hook may return the same node several times, also one that is linked where the document
// does not look.
TEST(ParserTest, NameOfANodeThatIsUsedAgainIsThatOfTheNewText) {
  struct Recycling : xml_document<char> {
    rapidxml::xml_node<char>* allocate_node(rapidxml::node_type type, const char* name,
                                            const char* value, std::size_t nameSize,
                                            std::size_t valueSize) override {
      if (!only) only = xml_document::allocate_node(type, name, value, nameSize, valueSize);
      return only;
    }
    rapidxml::xml_node<char>* only = nullptr;
  };
  Recycling document;
  std::string text = "<longname/>";
  char* cursor = text.data();
  document.parse<33>(cursor);
  text = "<a/>";
  cursor = text.data();
  document.parse<33>(cursor);
  EXPECT_EQ(tarn_test::dump(document), "{a}");
}

TEST(ParserTest, NodeThatIsLinkedAlreadyIsAnAssertion) {
  struct Repeating : xml_document<char> {
    std::vector<rapidxml::xml_node<char>*> made;
    rapidxml::xml_node<char>* allocate_node(rapidxml::node_type type, const char* name,
                                            const char* value, std::size_t nameSize,
                                            std::size_t valueSize) override {
      if (made.size() == 2) return made.back();
      made.push_back(xml_document::allocate_node(type, name, value, nameSize, valueSize));
      return made.back();
    }
  };
  Repeating document;
  std::string text = "<a><b/><c/></a>";
  char* cursor = text.data();
  EXPECT_DEATH(document.parse<33>(cursor), "assertion failed: child && !child->parent");
}

TEST(ParserTest, SecondParseDetachesTheFirst) {
  std::string first = "<a/>";
  std::string second = "<b/>";
  xml_document<char> document;
  char* cursor = first.data();
  document.parse<33>(cursor);
  const auto* const a = document.first_node();
  cursor = second.data();
  document.parse<33>(cursor);
  EXPECT_EQ(a->parent(), nullptr);
  EXPECT_EQ(tarn_test::dump(document), "{b}");
}

// The cursor given to parse() is at the name when the hook for an element is called, and after it
// for an attribute.
TEST(ParserTest, AllocationHooksAreCalledInOrderWithTheCursorAtTheName) {
  struct Watching : xml_document<char> {
    char* position = nullptr;
    std::string calls;
    rapidxml::xml_node<char>* allocate_node(rapidxml::node_type type, const char* name,
                                            const char* value, std::size_t nameSize,
                                            std::size_t valueSize) override {
      EXPECT_TRUE(!name && !value && nameSize == 0 && valueSize == 0);
      calls += std::to_string(type) + *position;
      return xml_document::allocate_node(type, name, value, nameSize, valueSize);
    }
    rapidxml::xml_attribute<char>* allocate_attribute(const char* name, const char* value,
                                                      std::size_t nameSize,
                                                      std::size_t valueSize) override {
      EXPECT_TRUE(!name && !value && nameSize == 0 && valueSize == 0);
      calls += std::string("@") + *position;
      return xml_document::allocate_attribute(name, value, nameSize, valueSize);
    }
  };
  Watching document;
  std::string text = "<?xml v='1'?><a x='1' y='2'><b/>t<c z =''/></a>";
  document.position = text.data();
  document.parse<33>(document.position);
  EXPECT_EQ(document.calls, "5v@=1a@=@=1b1c@ ");
}

TEST(ParserTest, AMillionNestedElementsParseAndPrintOnASmallStack) {
  constexpr std::size_t depth = 1000000;
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += "<a>";
  for (std::size_t i = 0; i < depth; ++i) text += "</a>";
  const std::string original = text;
  std::string printed;
  tarn_test::runOnSmallStack([&] {
    xml_document<char> document;
    char* cursor = text.data();
    document.parse<33>(cursor);
    rapidxml::print_node(printed, &document, rapidxml::print_no_indenting, 0);
  });
  EXPECT_TRUE(printed == original);
}

TEST(ParserTest, FiveThousandLevelsPrintIndentedOnASmallStack) {
  constexpr std::size_t depth = 5000;
  std::string text;
  for (std::size_t i = 0; i < depth; ++i) text += "<a>";
  for (std::size_t i = 0; i < depth; ++i) text += "</a>";
  std::string printed;
  tarn_test::runOnSmallStack([&] {
    xml_document<char> document;
    char* cursor = text.data();
    document.parse<33>(cursor);
    rapidxml::print_node(printed, &document, 0, 0);
  });
  // Start and end tags at depths 0 to 4,999; the innermost element is one line.
  EXPECT_EQ(printed.size(), depth * (depth - 1) - (depth - 1) + depth * 7 + (2 * depth - 1) + 1);
}

}  // namespace
