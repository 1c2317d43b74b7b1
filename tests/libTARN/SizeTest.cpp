// Sizes at which something may go wrong: long values, many attributes and children, places in the
// pool where a block ends, texts that end where memory ends.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "DomDocument.hpp"
#include "libtarn.hpp"
#include "rapidxml/rapidxml_print.hpp"
#include "support/TextAtTheEdge.hpp"
#include "support/consistency.hpp"

namespace {

using namespace libtarn::model;
using tarn_test::brokenDocument;
using tarn_test::TextAtTheEdge;

constexpr std::size_t GIB = std::size_t{1} << 30;

// Tests that take gigabytes run when they are asked for.
bool hasGigabytes() { return std::getenv("TARN_LARGE_TESTS") != nullptr; }

std::string document(const std::string& body) {
  return "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'><header/>" + body +
         "</cmData></tarn>";
}

std::string printed(LibTarnDocument& loaded) {
  std::string text;
  libtarn::util::dumpTarnDocument(loaded, text);
  return text;
}

// Many of a kind

class CountTest : public testing::TestWithParam<int> {
 protected:
  std::string repeat(const std::string& before, const std::string& after) {
    std::string text;
    for (int i = 0; i < GetParam(); ++i) text += before + std::to_string(i) + after;
    return text;
  }

  // `loaded` is compared with itself, printed and loaded again.
  void expectSound(LibTarnDocument& loaded) {
    ASSERT_EQ(brokenDocument(loaded), "");
    const std::string text = printed(loaded);
    LibTarnDocument again;
    ASSERT_EQ(again.parse(text.c_str(), true), 0);
    ASSERT_EQ(printed(again), text);
  }
};

TEST_P(CountTest, Attributes) {
  const std::string text =
      document("<managedObject class='C' distName='A-1'" + repeat(" a", "='v'") + "/>");
  LibTarnDocument loaded;
  ASSERT_EQ(loaded.parse(text.c_str(), true), 0);
  ASSERT_NO_FATAL_FAILURE(expectSound(loaded));
  // A copy has them all.
  LibTarnDocument other;
  const auto* const object = loaded.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  const TarnDomElement* const copy = object->clone(other.getFactory());
  int count = 0;
  for (auto* attribute = copy->first_attribute(); attribute;
       attribute = attribute->next_attribute()) {
    ++count;
  }
  EXPECT_EQ(count, GetParam() + 2);
}

TEST_P(CountTest, Parameters) {
  LibTarnDocument loaded;
  ASSERT_EQ(loaded.parse(document("<managedObject class='C' distName='A-1'>" +
                                  repeat("<p name='a", "'>v</p>") + "</managedObject>")
                             .c_str(),
                         true),
            0);
  ASSERT_NO_FATAL_FAILURE(expectSound(loaded));
  const auto* const object = loaded.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  EXPECT_NE(object->getScalarParameter(("a" + std::to_string(GetParam() - 1)).c_str()), nullptr);
  EXPECT_EQ(object->getScalarParameter(("a" + std::to_string(GetParam())).c_str()), nullptr);
}

TEST_P(CountTest, Objects) {
  LibTarnDocument loaded;
  ASSERT_EQ(
      loaded.parse(document(repeat("<managedObject class='C' distName='A-", "'/>")).c_str(), true),
      0);
  ASSERT_NO_FATAL_FAILURE(expectSound(loaded));
  EXPECT_EQ(loaded.getLibTarnCmData()->getManagedObjectNumber(),
            static_cast<std::size_t>(GetParam()));
}

TEST_P(CountTest, ValuesItemsAndExtensions) {
  LibTarnDocument loaded;
  ASSERT_EQ(loaded.parse(document("<managedObject class='C' distName='A-1'><list name='l'>" +
                                  repeat("<p>", "</p>") + "</list><list name='m'>" +
                                  repeat("<item><p name='x'>", "</p></item>") + "</list>" +
                                  repeat("<extension name='e", "'/>") + "</managedObject>")
                             .c_str(),
                         true),
            0);
  ASSERT_NO_FATAL_FAILURE(expectSound(loaded));
}

INSTANTIATE_TEST_SUITE_P(SizeTest, CountTest, testing::Values(50000, 65536, 70000),
                         testing::PrintToStringParamName());

TEST(SizeTest, AMillionObjectsParametersAndChildren) {
  std::string objects;
  std::string parameters;
  std::string children;
  for (int i = 0; i < 1000000; ++i) {
    const std::string number = std::to_string(i);
    objects += "<managedObject class='C' distName='B-" + number + "'/>";
    parameters += "<p name='a" + number + "'/>";
    children += "<p/>";
  }
  LibTarnDocument loaded;
  ASSERT_EQ(
      loaded.parse(document(objects + "<managedObject class='C' distName='A-1'>" + parameters +
                            "<list name='l'>" + children + "</list></managedObject>")
                       .c_str(),
                   true),
      0);
  ASSERT_EQ(brokenDocument(loaded), "");
  EXPECT_EQ(loaded.getLibTarnCmData()->getManagedObjectNumber(), 1000001U);
}

// Long texts

TEST(SizeTest, AGibibyteOfValue) {
  // Takes 3 GiB, which not every machine that runs the tests has.
  if (!hasGigabytes()) GTEST_SKIP() << "set TARN_LARGE_TESTS";
  const std::string before = "<a b=\"";
  const std::string after = "\">y</a>";
  std::vector<char> text(before.size() + GIB + after.size() + 1, 'x');
  std::copy(before.begin(), before.end(), text.begin());
  std::memcpy(text.data() + before.size() + GIB, after.c_str(), after.size() + 1);
  libDomXml::DomDocument document(false);
  ASSERT_EQ(document.rapidParse(text.data()), 0);
  const rapidxml::xml_node<char>& element = *document.first_node();
  EXPECT_EQ(element.first_attribute()->value_size(), GIB);
  EXPECT_STREQ(element.value(), "y");
  std::string out;
  rapidxml::print_node(out, &document, 0, 0);
  EXPECT_EQ(out.size(), GIB + std::strlen("<a b=\"\">y</a>\n\n"));
}

TEST(SizeTest, TextsBeyond32BitsAreRefused) {
  // Takes 5 GiB, and an address space that holds such a text.
  if (!hasGigabytes() || sizeof(std::size_t) == 4) GTEST_SKIP() << "set TARN_LARGE_TESTS (64-bit)";
  struct Case {
    const char* before;
    const char* after;
  };
  for (const Case& each :
       {Case{"<a b='", "'/>"}, Case{"<a>", "</a>"}, Case{"<", "/>"}, Case{"<a ", "='x'/>"}}) {
    SCOPED_TRACE(each.before);
    std::vector<char> text(each.before, each.before + std::strlen(each.before));
    text.resize(text.size() + 4 * GIB, 'x');
    text.insert(text.end(), each.after, each.after + std::strlen(each.after) + 1);
    libDomXml::DomDocument document(false);
    EXPECT_EQ(document.rapidParse(text.data()), 1);
  }
}

TEST(SizeDeathTest, RecordsTakeNoSizeBeyond32Bits) {
  // A size of 32 bits holds none beyond them.
  if (sizeof(std::size_t) == 4) GTEST_SKIP() << "there is none";
  rapidxml::xml_attribute<char> attribute;
  const auto size = static_cast<std::size_t>(std::uint64_t{1} << 32U);
  EXPECT_DEATH(attribute.value("x", size), "size fits 32 bits");
}

// Places in the pool

// Texts of every size around those that leave the current block with no more than a few bytes, and
// nodes and attributes behind them.
TEST(SizeTest, TextsEndAtEveryPlaceAroundTheEndOfABlock) {
  using Pool = rapidxml::memory_pool<char>;
  for (const std::size_t block : {Pool::static_pool_size, Pool::dynamic_pool_size}) {
    for (std::size_t size = block - 16; size <= block + 16; ++size) {
      libDomXml::DomDocument document(false);
      if (block == Pool::dynamic_pool_size) {
        // Out of the first block.
        document.createDomElement(std::string(Pool::static_pool_size, 'f').c_str(), nullptr);
      }
      const std::string name(size, 'n');
      libDomXml::IDomElement* const element = document.createDomElement(name.c_str(), "value");
      element->setAttribute(name.c_str(), name.c_str());
      element->setAttribute("b", "c");
      document.addChild(element);
      ASSERT_EQ(tarn_test::brokenTree(document, &document), "");
      ASSERT_EQ(element->getTagName(), name);
      ASSERT_EQ(element->getAttribute(name.c_str()), name);
      ASSERT_STREQ(element->getAttribute("b"), "c");
      ASSERT_STREQ(element->getValue(), "value");
    }
  }
}

// As above, with what has been taken before moved byte by byte.
TEST(SizeTest, ElementsOfTheModelStandAtEveryPlaceAroundTheEndOfABlock) {
  constexpr std::size_t BLOCK = rapidxml::memory_pool<char>::dynamic_pool_size;
  const std::string text = document(
      "<managedObject class='C' distName='A-1'><p name='a'>1</p><list name='l'><item><p name='x'/>"
      "</item></list><extension name='e'/></managedObject>");
  for (std::size_t left = 0; left < 2048; left += sizeof(void*)) {
    LibTarnDocument loaded;
    // So much of the block is taken that `left` bytes are not.
    loaded.getItsTarnDomDocument()->allocateMemory(static_cast<unsigned>(BLOCK));
    loaded.getItsTarnDomDocument()->allocateMemory(static_cast<unsigned>(BLOCK - left));
    ASSERT_EQ(loaded.parse(text.c_str(), true), 0);
    ASSERT_EQ(brokenDocument(loaded), "");
  }
}

// Texts at the end of memory

// `before` and `after`, with so many characters between them that the whole has `size`; or the
// beginning of that when there is no room.
std::string ofSize(std::size_t size, const std::string& before, const std::string& after) {
  const std::size_t fixed = before.size() + after.size();
  if (size < fixed) return (before + after).substr(0, size);
  return before + std::string(size - fixed, 'x') + after;
}

TEST(SizeTest, NothingIsReadBehindTheEndOfAText) {
  struct Shape {
    const char* before;
    const char* after;
  };
  const Shape shapes[] = {{"<a>", "</a>"},       {"<a b=\"", "\"/>"}, {"<", "/>"},
                          {"<a ", "='1'/>"},     {"<a>", ""},         {"<a b='", ""},
                          {"<!--", "-->"},       {"<!--", ""},        {"<a>&#x41", ";</a>"},
                          {"<!DOCTYPE [", "]>"}, {"<?", "?>"},        {"<![CDATA[", "]]>"},
                          {"<a>", "&"},          {"<a>", "&#x1"},     {"<a>", "</a"}};
  const std::size_t sizes[] = {0, 1, 2, 15, 16, 17, 31, 4095, 4096, 4097, 8191, 8192, 8193};
  for (const std::size_t size : sizes) {
    for (const Shape& shape : shapes) {
      const std::string source = ofSize(size, shape.before, shape.after);
      TextAtTheEdge text(source);
      libDomXml::DomDocument plain(false);
      const int result = plain.rapidParse(text.text());
      // As anywhere else.
      std::string copy = source;
      libDomXml::DomDocument elsewhere(false);
      EXPECT_EQ(result, elsewhere.rapidParse(copy.data())) << shape.before << ' ' << size;
      EXPECT_EQ(tarn_test::brokenTree(plain, &plain), "");
    }
    // The model's own elements, whose texts are in a vector of just their size.
    const std::string text = ofSize(size, "<tarn><cmData type='plan' id='", "'/></tarn>");
    TextAtTheEdge guarded(text);
    LibTarnDocument loaded;
    loaded.getItsTarnDomDocument()->rapidParse(guarded.text());
    LibTarnDocument copied;
    copied.parse(guarded.text(), true);
  }
}

}  // namespace
