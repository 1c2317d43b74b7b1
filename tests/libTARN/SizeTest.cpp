// Sizes that may cause faults: long values, many attributes and children, allocations at the end of
// a block of the pool, texts at the end of readable memory.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <ostream>
#include <string>

#include "libtarn/DomDocument.hpp"
#include "libtarn/libtarn.hpp"
#include "support/TextAtTheEdge.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using tarn_test::brokenDocument;
using tarn_test::documentText;
using tarn_test::printed;
using tarn_test::TextAtTheEdge;

// Many of a kind

struct Count {
  const char* name;
  int number;
};

void PrintTo(const Count& count, std::ostream* out) { *out << count.number; }

class CountTest : public testing::TestWithParam<Count> {
 protected:
  std::string repeat(const std::string& before, const std::string& after) {
    std::string text;
    for (int i = 0; i < GetParam().number; ++i) text += before + std::to_string(i) + after;
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
      documentText("<managedObject class='C' distName='A-1'" + repeat(" a", "='v'") + "/>");
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
  EXPECT_EQ(count, GetParam().number + 2);
}

TEST_P(CountTest, Parameters) {
  LibTarnDocument loaded;
  ASSERT_EQ(loaded.parse(documentText("<managedObject class='C' distName='A-1'>" +
                                      repeat("<p name='a", "'>v</p>") + "</managedObject>")
                             .c_str(),
                         true),
            0);
  ASSERT_NO_FATAL_FAILURE(expectSound(loaded));
  const auto* const object = loaded.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  EXPECT_NE(object->getScalarParameter(("a" + std::to_string(GetParam().number - 1)).c_str()),
            nullptr);
  EXPECT_EQ(object->getScalarParameter(("a" + std::to_string(GetParam().number)).c_str()), nullptr);
}

TEST_P(CountTest, Objects) {
  LibTarnDocument loaded;
  ASSERT_EQ(loaded.parse(
                documentText(repeat("<managedObject class='C' distName='A-", "'/>")).c_str(), true),
            0);
  ASSERT_NO_FATAL_FAILURE(expectSound(loaded));
  EXPECT_EQ(loaded.getLibTarnCmData()->getManagedObjectNumber(),
            static_cast<std::size_t>(GetParam().number));
}

TEST_P(CountTest, ValuesItemsAndExtensions) {
  LibTarnDocument loaded;
  ASSERT_EQ(loaded.parse(documentText("<managedObject class='C' distName='A-1'><list name='l'>" +
                                      repeat("<p>", "</p>") + "</list><list name='m'>" +
                                      repeat("<item><p name='x'>", "</p></item>") + "</list>" +
                                      repeat("<extension name='e", "'/>") + "</managedObject>")
                             .c_str(),
                         true),
            0);
  ASSERT_NO_FATAL_FAILURE(expectSound(loaded));
}

INSTANTIATE_TEST_SUITE_P(SizeTest, CountTest,
                         testing::Values(Count{"FiftyThousand", 50000},
                                         Count{"TwoToTheSixteenth", 65536},
                                         Count{"SeventyThousand", 70000}),
                         [](const auto& each) { return each.param.name; });

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
      loaded.parse(documentText(objects + "<managedObject class='C' distName='A-1'>" + parameters +
                                "<list name='l'>" + children + "</list></managedObject>")
                       .c_str(),
                   true),
      0);
  ASSERT_EQ(brokenDocument(loaded), "");
  EXPECT_EQ(loaded.getLibTarnCmData()->getManagedObjectNumber(), 1000001U);
}

TEST(SizeDeathTest, RecordsTakeNoSizeBeyond32Bits) {
  constexpr std::size_t LARGEST = std::numeric_limits<std::uint32_t>::max();
  rapidxml::xml_attribute<char> attribute;
  attribute.value("x", LARGEST);
  EXPECT_EQ(attribute.value_size(), LARGEST);
  if constexpr (sizeof(std::size_t) > sizeof(std::uint32_t)) {
    EXPECT_DEATH(attribute.value("x", LARGEST + 1), "size fits 32 bits");
  }
}

// Addresses in the pool

// Texts of every size around those that leave only a few bytes of the current block, and nodes and
// attributes after them.
TEST(SizeTest, TextsEndAtEveryPlaceAroundTheEndOfABlock) {
  using Pool = rapidxml::memory_pool<char>;
  for (const std::size_t block : {Pool::static_pool_size, Pool::dynamic_pool_size}) {
    for (std::size_t size = block - 16; size <= block + 16; ++size) {
      libDomXml::DomDocument document(false);
      if (block == Pool::dynamic_pool_size) {
        // Goes beyond the first block.
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

// As above, with the allocations before moved byte by byte.
TEST(SizeTest, TypedElementsAtEveryAddressAroundTheEndOfABlock) {
  constexpr std::size_t BLOCK = rapidxml::memory_pool<char>::dynamic_pool_size;
  const std::string text = documentText(
      "<managedObject class='C' distName='A-1'><p name='a'>1</p><list name='l'><item><p name='x'/>"
      "</item></list><extension name='e'/></managedObject>");
  for (std::size_t left = 0; left < 2048; left += sizeof(void*)) {
    LibTarnDocument loaded;
    // Allocates all of the block but `left` bytes.
    loaded.getItsTarnDomDocument()->allocateMemory(static_cast<unsigned>(BLOCK));
    loaded.getItsTarnDomDocument()->allocateMemory(static_cast<unsigned>(BLOCK - left));
    ASSERT_EQ(loaded.parse(text.c_str(), true), 0);
    ASSERT_EQ(brokenDocument(loaded), "");
  }
}

// Texts at the end of memory

// A text of `size` characters: `before`, padding, `after`; cut off when `size` is too small.
std::string ofSize(std::size_t size, const std::string& before, const std::string& after) {
  const std::size_t fixed = before.size() + after.size();
  if (size < fixed) return (before + after).substr(0, size);
  return before + std::string(size - fixed, 'x') + after;
}

TEST(SizeTest, NothingIsReadAfterTheEndOfAText) {
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
      libDomXml::DomDocument dom(false);
      const int result = dom.rapidParse(text.text());
      // As anywhere else.
      std::string copy = source;
      libDomXml::DomDocument elsewhere(false);
      EXPECT_EQ(result, elsewhere.rapidParse(copy.data())) << shape.before << ' ' << size;
      EXPECT_EQ(tarn_test::brokenTree(dom, &dom), "");
    }
    // Typed elements, with a text in a vector of exactly its size.
    const std::string text = ofSize(size, "<tarn><cmData type='plan' id='", "'/></tarn>");
    TextAtTheEdge guarded(text);
    LibTarnDocument loaded;
    loaded.getItsTarnDomDocument()->rapidParse(guarded.text());
    LibTarnDocument copied;
    copied.parse(guarded.text(), true);
  }
}

}  // namespace
