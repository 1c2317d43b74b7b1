// Loading as a whole: heap allocations, and the same tree from both kinds of document.

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "libtarn/DomDocument.hpp"
#include "libtarn/libtarn.hpp"
#include "support/HeapCount.hpp"
#include "support/treeDump.hpp"

namespace {

using namespace libtarn::model;

std::string documentOf(std::size_t size) {
  std::string text = "<tarn><cmData type='plan'><header/>";
  for (int i = 0; text.size() < size; ++i) {
    const std::string number = std::to_string((i * 7919) % 1000003);
    text +=
        "<managedObject class='C" + std::to_string(i % 7) + "' distName='A-1/B-" + number +
        "' version='1'><p name='z'>" + number +
        "</p><p name='a'>x &amp; y</p><list name='l'><p>1</p><p>2</p></list><list name='i'><item>"
        "<p name='q'>1</p></item></list><extension name='e'><p name='k'>v</p></extension>"
        "</managedObject>\n";
  }
  return text + "</cmData></tarn>";
}

TEST(LoadTest, TenMegabytesTakeFewerThanFiftyHeapAllocations) {
  const std::string text = documentOf(10000000);
  std::vector<char> vector(text.c_str(), text.c_str() + text.size() + 1);
  const std::size_t before = tarn_test::heapAllocations();
  LibTarnDocument document;
  ASSERT_EQ(document.parse(std::move(vector), false), 0);
  EXPECT_LT(tarn_test::heapAllocations() - before, 50U);
  EXPECT_GT(document.getLibTarnCmData()->getManagedObjectNumber(), 30000U);
}

std::string treeOfDom(const std::string& text) {
  libDomXml::DomDocument document(true);
  EXPECT_EQ(document.parse(text.c_str(), boost::shared_ptr<libDomXml::IStripper>()), 0);
  return tarn_test::dump(*static_cast<libDomXml::DomElement*>(document.getFirstChild(nullptr)));
}

std::string treeOfModel(const std::string& text) {
  LibTarnDocument document;
  EXPECT_EQ(document.parse(text.c_str(), false), 0);
  return tarn_test::dump(
      static_cast<const libDomXml::DomElement&>(*static_cast<libDomXml::DomElement*>(
          document.getItsTarnDomDocument()->getFirstChild("tarn"))));
}

TEST(LoadTest, BothKindsOfDocumentGiveTheSameTree) {
  std::ifstream file("examples/network.xml", std::ios::binary);
  const std::string network((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
  ASSERT_GT(network.size(), 10000U);
  for (const std::string& text :
       {network, documentOf(100000), std::string("<tarn/>"),
        std::string(
            "<tarn a='1'>text<!-- --><cmData type='plan' a=\"&lt;\"><manag/><l>x</l></cmData>"
            "</tarn>"),
        std::string(
            "<tarn><p>a<p>b</p>c</p><list><list><item><header/></item></list></list></tarn>")}) {
    EXPECT_EQ(treeOfModel(text), treeOfDom(text));
  }
}

}  // namespace
