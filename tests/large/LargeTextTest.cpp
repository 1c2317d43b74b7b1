// Texts of gigabytes, and beyond what 32 bits count. A program of its own, since it takes 5 GiB.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "DomDocument.hpp"
#include "rapidxml/rapidxml_print.hpp"

namespace {

constexpr std::size_t GIB = std::size_t{1} << 30;

TEST(LargeTextTest, AGibibyteOfValue) {
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

TEST(LargeTextTest, TextsBeyond32BitsAreRefused) {
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

}  // namespace
