// Texts of gigabytes, and beyond what 32 bits count. A program of its own, since it takes 5 GiB.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "libtarn/DomDocument.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"

namespace {

constexpr std::size_t GIB = std::size_t{1} << 30;

// `size` characters between two texts, and the terminating NUL.
std::vector<char> around(const std::string& before, std::size_t size, const std::string& after) {
  std::vector<char> text(before.size() + size + after.size() + 1, 'x');
  std::copy(before.begin(), before.end(), text.begin());
  std::memcpy(text.data() + before.size() + size, after.c_str(), after.size() + 1);
  return text;
}

TEST(LargeTextTest, AGibibyteOfValue) {
  std::vector<char> text = around("<a b=\"", GIB, "\">y</a>");
  libDomXml::DomDocument document(false);
  ASSERT_EQ(document.rapidParse(text.data()), 0);
  const rapidxml::xml_node<char>& element = *document.first_node();
  EXPECT_EQ(element.first_attribute()->value_size(), GIB);
  EXPECT_STREQ(element.value(), "y");
  std::string out;
  rapidxml::print_node(out, &document, 0, 0);
  EXPECT_EQ(out.size(), GIB + std::strlen("<a b=\"\">y</a>\n\n"));
}

TEST(LargeTextTest, ValueOfAllThat32BitsCount) {
  std::vector<char> text = around("<a>", 4 * GIB - 1, "</a>");
  libDomXml::DomDocument document(false);
  ASSERT_EQ(document.rapidParse(text.data()), 0);
  EXPECT_EQ(document.first_node()->value_size(), 4 * GIB - 1);
}

TEST(LargeTextTest, TextsBeyond32BitsAreRefused) {
  struct Case {
    const char* before;
    const char* after;
  };
  for (const Case& each :
       {Case{"<a b='", "'/>"}, Case{"<a>", "</a>"}, Case{"<", "/>"}, Case{"<a ", "='x'/>"}}) {
    SCOPED_TRACE(each.before);
    std::vector<char> text = around(each.before, 4 * GIB, each.after);
    libDomXml::DomDocument document(false);
    EXPECT_EQ(document.rapidParse(text.data()), 1);
  }
}

}  // namespace
