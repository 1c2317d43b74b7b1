#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "libtarn/util/checkPrinted.hpp"

namespace {

using libtarn::model::LibTarnDocument;
using libtarn::util::checkPrinted;
using libtarn::util::checkXml;
using libtarn::util::dumpTarnDocument;
using libtarn::util::XmlFault;
using libtarn::util::XmlFaults;
using Kind = XmlFault::Kind;

// The kinds of the faults of the printed document, which must be those that checkXml() finds.
std::vector<Kind> kindsOf(LibTarnDocument& document) {
  std::string printed;
  dumpTarnDocument(document, printed);
  const XmlFaults faults = checkPrinted(printed);
  EXPECT_EQ(faults.count, checkXml(printed).count) << printed;
  std::vector<Kind> kinds;
  for (const XmlFault& fault : faults.list) kinds.push_back(fault.kind);
  return kinds;
}

std::vector<Kind> kindsOf(const std::string& text) {
  LibTarnDocument document;
  std::vector<char> bytes(text.begin(), text.end());
  bytes.push_back('\0');
  EXPECT_EQ(document.parse(bytes, false), 0) << text;
  return kindsOf(document);
}

std::string withObject(const std::string& content, const std::string& declaration = "") {
  return declaration + "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'><header/>" +
         "<managedObject class='C' distName='A-1'>" + content + "</managedObject></cmData></tarn>";
}

const std::vector<Kind> NONE;

TEST(CheckPrintedTest, WhatTheFormatHasIsXml) {
  EXPECT_EQ(kindsOf(withObject("<p name='a'>1</p><list name='l'><item><p name='b'/></item></list>"
                               "<extension name='e'><p name='&lt;&quot;&apos;&amp;'>]]&gt;\t\r"
                               "\n\xC3\xA9\xF0\x9F\x98\x80</p></extension>")),
            NONE);
  EXPECT_EQ(kindsOf(""), NONE);
  LibTarnDocument fresh;
  EXPECT_EQ(kindsOf(fresh), NONE);
}

// What is wrong in the text and right in what is printed.
TEST(CheckPrintedTest, PrinterCorrectsWhatIsNotInNamesAndCharacters) {
  EXPECT_EQ(kindsOf(withObject("<p name='<'>a&b&unknown;]]></list><!-- -- -->")), NONE);
}

TEST(CheckPrintedTest, CharactersThatXmlForbidsAreFound) {
  EXPECT_EQ(kindsOf(withObject("<p name='a'>\x01</p>")),
            std::vector<Kind>{Kind::ForbiddenCharacter});
  EXPECT_EQ(kindsOf(withObject("<p name='a&#31;'/>")), std::vector<Kind>{Kind::ForbiddenCharacter});
  EXPECT_EQ(kindsOf(withObject("<p name='a'>&#0;</p>")), std::vector<Kind>{Kind::NulByte});
  EXPECT_EQ(kindsOf(withObject("<p name='a'>&#xD800;&#xFFFE;&#xFFFF;</p>")),
            (std::vector<Kind>(3, Kind::ForbiddenCharacter)));
  EXPECT_EQ(kindsOf(withObject("<p name='a'>\xFF\xC3</p>")),
            (std::vector<Kind>(2, Kind::InvalidUtf8)));
}

// The blocks of the search end before and after the character.
TEST(CheckPrintedTest, CharacterIsFoundWhereverItStands) {
  const auto countOf = [](std::size_t before, const std::string& end) {
    std::string parameter = "<p name='a'>";
    parameter.append(before, 'x').append(end).append("</p>");
    return kindsOf(withObject(parameter)).size();
  };
  for (std::size_t before = 0; before < 300; ++before) {
    EXPECT_EQ(countOf(before, "\x1F"), 1U) << before;
    EXPECT_EQ(countOf(before, "\x80"), 1U) << before;
    EXPECT_EQ(countOf(before, "\xC3\xA9"), 0U) << before;
    EXPECT_EQ(countOf(5, std::string("\xC3\xA9").append(before, 'y') + '\x01'), 1U) << before;
  }
}

TEST(CheckPrintedTest, NamesOfAttributesAreNames) {
  EXPECT_EQ(kindsOf(withObject("<p \xC3\xA9='1' _x.-9:y='2'/>")), NONE);
  for (const char* const name : {"1", "-", ".", "a\"", "a'", "a&", "\"", "a;", "\xC2\xB7"}) {
    EXPECT_NE(kindsOf(withObject(std::string("<p ") + name + "='1'/>")), NONE) << name;
  }
}

TEST(CheckPrintedTest, NamesOfAttributesAreDistinct) {
  EXPECT_EQ(kindsOf(withObject("<p name='a' name='b'/>")),
            std::vector<Kind>{Kind::DuplicateAttribute});
  std::string many;
  for (int i = 0; i < 20; ++i) {
    many += " a" + std::to_string(i) + "='1'";
    EXPECT_EQ(kindsOf(withObject("<p" + many + "/>")), NONE);
    EXPECT_EQ(kindsOf(withObject("<p" + many + " a0='1'/>")).size(), 1U);
  }
}

TEST(CheckPrintedTest, DeclarationIsOneOfXmlAndOfTheCharacters) {
  const std::string ascii = "<p name='a'>x</p>";
  const std::string letter = "<p name='a'>&#233;</p>";
  for (const char* const good : {"", "<?xml version='1.0'?>",
                                 "<?xml version='1.0' encoding='utf-8'"
                                 " standalone='yes'?>"}) {
    EXPECT_EQ(kindsOf(withObject(ascii, good)), NONE) << good;
    EXPECT_EQ(kindsOf(withObject(letter, good)), NONE) << good;
  }
  const std::string usAscii = "<?xml version='1.0' encoding='US-ASCII'?>";
  EXPECT_EQ(kindsOf(withObject(ascii, usAscii)), NONE);
  EXPECT_EQ(kindsOf(withObject(letter, usAscii)), std::vector<Kind>{Kind::Encoding});
  for (const char* const bad :
       {"<?xml x='1'?>", "<?xml encoding='UTF-8'?>", "<?xml version='1.0' encoding='UTF-16'?>",
        "<?xml version='1.0' encoding='?&gt;'?>", "<?xml version='1.0' version='1.0'?>"}) {
    EXPECT_NE(kindsOf(withObject(ascii, bad)), NONE) << bad;
  }
}

TEST(CheckPrintedTest, EditsAreSeen) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse(withObject("<p name='a'>1</p>").c_str(), false), 0);
  auto* const object = document.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  EXPECT_EQ(kindsOf(document), NONE);
  object->getScalarParameter("a")->setValue("\x02");
  EXPECT_EQ(kindsOf(document), std::vector<Kind>{Kind::ForbiddenCharacter});
  object->getScalarParameter("a")->setValue("2");
  EXPECT_EQ(kindsOf(document), NONE);
  document.getItsTarnDomDocument()->getRootElement()->setTagName("a b");
  EXPECT_NE(kindsOf(document), NONE);
}

TEST(CheckPrintedTest, LimitIsThatOfTheReading) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse(withObject("<p name='a'>\x01\x02\x03</p>").c_str(), false), 0);
  std::string printed;
  dumpTarnDocument(document, printed);
  const XmlFaults faults = checkPrinted(printed, 1);
  EXPECT_EQ(faults.list.size(), 1U);
  EXPECT_EQ(faults.count, 3U);
}

// Bytes that are awkward in names and values, anywhere.
TEST(CheckPrintedTest, RandomDocumentsHaveTheFaultsThatCheckXmlFinds) {
  const std::vector<std::string> pieces = {"a",    "b", "\x01", "\xC3\xA9", "\xC3", "&#233;", "'",
                                           "&#1;", ":", "-",    "1",        "&lt;", "&",      "\r"};
  std::mt19937 random(7);
  const auto text = [&](std::size_t most) {
    std::string made;
    for (std::size_t size = random() % most; size > 0; --size) {
      // Mostly what is good.
      made += pieces[random() % 4 == 0 ? random() % pieces.size() : random() % 2];
    }
    return made;
  };
  std::size_t faulty = 0;
  for (int round = 0; round < 5000; ++round) {
    std::string content;
    for (int i = 0; i < 3; ++i) {
      content += "<p name=\"" + std::to_string(i) + text(4) + "\" x" + text(4) + "=\"" + text(4) +
                 "\">" + text(20) + "</p>";
    }
    LibTarnDocument document;
    if (document.parse(withObject(content).c_str(), false) != 0) continue;
    faulty += kindsOf(document).empty() ? 0 : 1;
  }
  EXPECT_GT(faulty, 500U);
  EXPECT_LT(faulty, 4500U);
}

}  // namespace
