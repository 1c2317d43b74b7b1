// Text of a document is not trusted: the document stays usable whatever the text holds.

#include <gtest/gtest.h>

#include <boost/shared_ptr.hpp>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "libtarn/DomDocument.hpp"
#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentDeclaration.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"
#include "support/CapturedLog.hpp"
#include "support/SmallStack.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"
#include "support/treeDump.hpp"

namespace {

using namespace libtarn::model;
using tarn_test::CapturedLog;
using tarn_test::printed;
using tarn_test::vectorOf;

// Reads everything that can be reached through the model and through the tree.
std::string touchEverything(LibTarnDocument& document) {
  std::string all = tarn_test::dump(*document.getItsTarnDomDocument());
  all += tarn_test::dump(*document.getItsTarnDomDocument()->getRootElement());
  if (document.getVersion()) all += document.getVersion();
  if (document.getXmlns()) all += document.getXmlns();
  const LibTarnCmData* cmData = document.getLibTarnCmData();
  for (; cmData; cmData = cmData->getNextSiblingElement()) {
    all += cmData->getType().toString();
    if (const LibTarnHeader* const header = cmData->getLibTarnHeader()) {
      for (const Log* log = header->getLogs(); log; log = log->getNextSiblingElement()) {
        all += log->getValue();
      }
    }
    for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
      all += object->getOperation().toString();
      for (const auto& entry : object->getScalarParameters()) all += entry.second->getValue();
      for (const auto& entry : object->getListParameters()) {
        for (const auto* item = entry.second->getStructuredValues(); item;
             item = item->getNextSiblingElement()) {
          for (const auto& component : item->getComponents()) all += component.first;
        }
      }
      EXPECT_TRUE(object->match(*object) || !object->getExtensions());
    }
  }
  return all + printed(document);
}

struct Refusal {
  const char* text;
  const char* message;
  std::ptrdiff_t offset;
};

TEST(HostileTextTest, TypedDocumentRefusesWithPlace) {
  const Refusal cases[] = {
      {"<foo/>", "unknown TARN object", 4},
      {"<tarn><foo x=''/></tarn>", "unknown TARN object", 10},
      {"<tarn><managedObjectX/></tarn>", "unknown TARN object", 21},
      {"<tarn><tarn/></tarn>", "unknown TARN object", 11},
      {"<cmData><t/></cmData>", "unknown TARN object", 10},
      {"<p><ta/></p>", "unknown TARN object", 6},
      {"<tarn><?xml version='1.0'?></tarn>", "unknown TARN object", 12},
      {"<p>x<?XML ?></p>", "unknown TARN object", 10},
      {"<>", "expected element name", 1},
      {"<tarn><", "expected element name", 7},
      {"x", "expected <", 0},
      {"<tarn>", "unexpected end of data", 6},
  };
  for (const Refusal& c : cases) {
    LibTarnDocument document;
    std::vector<char> text = vectorOf(c.text);
    const char* const start = text.data();
    try {
      document.getItsTarnDomDocument()->parse(text);
      ADD_FAILURE() << c.text;
    } catch (const rapidxml::parse_error& error) {
      EXPECT_STREQ(error.what(), c.message) << c.text;
      EXPECT_EQ(error.where<char>() - start, c.offset) << c.text;
    }
    touchEverything(document);
    CapturedLog log;
    EXPECT_EQ(document.parse(c.text, false), 1);
    EXPECT_EQ(log.messages("ERROR"),
              std::vector<std::string>{std::string("Parsing failed: ") + c.message});
    touchEverything(document);
    EXPECT_EQ(document.parse("<tarn/>", false), 0);
    EXPECT_EQ(printed(document), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tarn></tarn>\n");
  }
}

TEST(HostileTextTest, BeginningsOfTagsSelectTheirClass) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse("<t><c type='plan'/><cmData type='plan'><h/><l/><li/><i/><e/><m/>"
                           "<manag distName='A-1'/><managedObject distName='B-1'/></cmData></t>",
                           false),
            0);
  const auto* const cmData = document.getLibTarnCmData();
  EXPECT_EQ(cmData->getManagedObjectNumber(), 1U);
  EXPECT_EQ(cmData->getLibTarnHeader(), nullptr);
  const IElement* const manag = cmData->getFirstChildElement("manag");
  ASSERT_NE(dynamic_cast<const LibTarnManagedObject*>(manag), nullptr);
  EXPECT_NE(dynamic_cast<const Log*>(cmData->getFirstChildElement("l")), nullptr);
  EXPECT_NE(dynamic_cast<const List*>(cmData->getFirstChildElement("li")), nullptr);
  EXPECT_NE(dynamic_cast<const LibTarnHeader*>(cmData->getFirstChildElement("h")), nullptr);
  EXPECT_NE(dynamic_cast<const Structure*>(cmData->getFirstChildElement("i")), nullptr);
  EXPECT_NE(dynamic_cast<const LibTarnExtension*>(cmData->getFirstChildElement("e")), nullptr);
  // A copy has the tag of its class.
  const auto* const copy =
      dynamic_cast<const LibTarnManagedObject*>(manag)->clone(document.getFactory());
  EXPECT_STREQ(copy->getTagName(), "managedObject");
  EXPECT_NE(printed(document).find("<manag distName"), std::string::npos);
}

TEST(HostileTextTest, RootOfTheTextIsTheDocumentsRootWithTheTextsAttributesOnly) {
  LibTarnDocument document;
  const auto* const root = document.getItsTarnDomDocument()->getRootElement();
  ASSERT_EQ(document.parse("<tarn version='9'/>", false), 0);
  EXPECT_EQ(document.getItsTarnDomDocument()->getRootElement(), root);
  EXPECT_EQ(document.getItsTarnDomDocument()->getFirstChild(nullptr), root);
  EXPECT_EQ(tarn_test::dump(*root), "tarn(version=9)");
}

TEST(HostileTextTest, RootAndDeclarationHaveTheirTextsAfterAFaultInTheirTags) {
  for (const char* const text :
       {"<tarn/x", "<tarn a", "<tarn a='b", "<tarn a='b'c", "<?xml a='b'>"}) {
    SCOPED_TRACE(text);
    CapturedLog log;
    LibTarnDocument document;
    EXPECT_EQ(document.parse(text, false), 1);
    EXPECT_EQ(tarn_test::brokenDocument(document), "");
    EXPECT_STREQ(document.getItsTarnDomDocument()->getRootElement()->getTagName(), "tarn");
  }
}

TEST(HostileTextTest, ValueWithoutAnEndIsNotTaken) {
  CapturedLog log;
  LibTarnDocument document;
  EXPECT_EQ(document.parse("<?xml version='1.0", false), 1);
  EXPECT_STREQ(document.getItsTarnDomDocument()->getDocumentDeclaration()->getAttribute("version"),
               "");
  EXPECT_EQ(document.parse("<tarn version=\"9 >\n<cmData/>", false), 1);
  EXPECT_STREQ(document.getVersion(), "");
  EXPECT_EQ(tarn_test::brokenDocument(document), "");
}

// Nodes for the parser differ from nodes for a host.
TEST(HostileTextTest, HostGetsTheDeclarationAtAnyTime) {
  CapturedLog log;
  LibTarnDocument document;
  TarnDomDocument& tree = *document.getItsTarnDomDocument();
  const auto declaration = [&tree] {
    return tree.allocate_node(rapidxml::node_declaration, nullptr, nullptr, 0, 0);
  };
  TarnDomElement* const first = declaration();
  EXPECT_EQ(first, tree.getDocumentDeclaration());
  EXPECT_FALSE(first->hasAttributes());
  for (const char* const text :
       {"<tarn/>", "<tarn/><!-- c -->", "<?xml version='1'?><tarn>", "<"}) {
    document.parse(text, false);
    EXPECT_EQ(declaration(), first) << text;
    EXPECT_EQ(declaration(), first) << text;
    EXPECT_FALSE(first->hasAttributes());
    EXPECT_EQ(document.parse("<tarn><?xml version='1'?></tarn>", false), 1);
  }
}

TEST(HostileTextTest, SecondRootAtTopLevelIsTheSameObjectAtTheEnd) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse("<tarn version='1'><cmData type='plan'/></tarn><p/>"
                           "<tarn xmlns='2'><cmData type='actual'/></tarn>",
                           false),
            0);
  EXPECT_EQ(tarn_test::dump(*document.getItsTarnDomDocument()),
            "{p tarn(xmlns=2){cmData(type=plan) cmData(type=actual)}}");
  EXPECT_EQ(document.getVersion(), nullptr);
}

TEST(HostileTextTest, SecondDeclarationAtTopLevelIsTheSameNodeAtTheEnd) {
  LibTarnDocument document;
  auto* const before = document.getItsTarnDomDocument()->getDocumentDeclaration();
  ASSERT_EQ(document.parse("<?xml version='1' x='y'?><tarn/><?xml version='2'?>", false), 0);
  EXPECT_EQ(document.getItsTarnDomDocument()->getDocumentDeclaration(), before);
  EXPECT_EQ(tarn_test::dump(*document.getItsTarnDomDocument()), "{tarn ?xml(version=2)}");
  EXPECT_EQ(printed(document), "<?xml version=\"2\"?>\n<tarn></tarn>\n");
}

TEST(HostileTextTest, MissingKeysCountAsTheEmptyText) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse("<tarn><cmData type='plan'><managedObject distName='A-1'/>"
                           "<managedObject><p>1</p><p name='a'/><list/></managedObject>"
                           "</cmData></tarn>",
                           false),
            0);
  const auto* const cmData = document.getLibTarnCmData();
  const LibTarnManagedObject* const nameless = *cmData->getLibTarnManagedObjects().begin();
  EXPECT_EQ(nameless->getDistName().getText(), nullptr);
  EXPECT_EQ(cmData->getLibTarnManagedObject(nullptr), nameless);
  EXPECT_EQ(cmData->getLibTarnManagedObject(""), nameless);
  EXPECT_STREQ(nameless->getScalarParameter("")->getValue(), "1");
  EXPECT_STREQ((*nameless->getScalarParameters().begin()).first, "");
  EXPECT_TRUE(nameless->hasListParameter(""));
  touchEverything(document);
}

TEST(HostileTextTest, DuplicatesOfMissingKeysAreReportedWithTheEmptyText) {
  const struct {
    const char* body;
    const char* message;
  } cases[] = {
      {"<managedObject/><managedObject distName=''/>",
       "The 'cmData' element already contains a 'managedObject' element with 'distName='"},
      {"<managedObject><p/><p name=''/></managedObject>",
       "The '' element already contains a 'p' element with 'name='"},
      {"<managedObject distName='A-1'><list/><list/></managedObject>",
       "The 'A-1' element already contains a 'list' element with 'name='"},
      {"<managedObject distName='A-1'><list name='l'><item><p/><p/></item></list></managedObject>",
       "The 'A-1(list: l)' element already contains a 'p' element with 'name='"},
      {"<managedObject><list><item><p name='x'/><p name='x'/></item></list></managedObject>",
       "The '(list: )' element already contains a 'p' element with 'name=x'"},
      {"<managedObject operation='modify'/>",
       "'modify' is not a valid value of 'managedObject' attribute 'operation'"},
      {"<managedObject operation=''/>",
       "'' is not a valid value of 'managedObject' attribute 'operation'"},
  };
  for (const auto& c : cases) {
    CapturedLog log;
    LibTarnDocument document;
    const std::string text =
        std::string("<tarn><cmData type='plan'>") + c.body + "</cmData></tarn>";
    EXPECT_EQ(document.parse(text.c_str(), false), 2);
    EXPECT_EQ(log.messages("ERROR"),
              std::vector<std::string>{std::string("Validation failed: ") + c.message});
    touchEverything(document);
  }
}

TEST(HostileTextTest, VectorWithoutTerminatorIsMalformedAndChangesNothing) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse("<tarn version='7'/>", false), 0);
  for (const std::vector<char>& text :
       {std::vector<char>(), std::vector<char>{'<'}, std::vector<char>{'\0', 'x'}}) {
    CapturedLog log;
    EXPECT_EQ(document.parse(text, true), 1);
    EXPECT_EQ(log.messages("ERROR"),
              std::vector<std::string>{"Parsing failed: unexpected end of data"});
    EXPECT_STREQ(document.getVersion(), "7");
  }
  EXPECT_EQ(document.parse(std::vector<char>{'\0'}, false), 0);
}

TEST(HostileTextTest, TextEndsAtItsFirstNul) {
  LibTarnDocument document;
  EXPECT_EQ(document.parse(std::vector<char>{'<', 't', '/', '>', '\0', 'x', '\0'}, false), 0);
}

// Texts of earlier parses

TEST(HostileTextTest, ElementsOfEarlierParsesStayReadable) {
  LibTarnDocument document;
  const char* const text =
      "<?xml version='1.1'?><tarn version='9'>rootvalue<cmData type='plan'>"
      "<managedObject class='C' distName='A-1'><p name='x'>1</p></managedObject></cmData></tarn>";
  ASSERT_EQ(document.parse(vectorOf(text), false), 0);
  const LibTarnManagedObject* const object =
      document.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  ASSERT_EQ(document.parse("", false), 0);
  EXPECT_EQ(document.getLibTarnCmData(), nullptr);
  ASSERT_EQ(document.parse(vectorOf("<p/>"), false), 0);
  EXPECT_STREQ(object->getClass(), "C");
  EXPECT_STREQ(object->getScalarParameter("x")->getValue(), "1");
  // Root and declaration keep values that no later text has replaced.
  EXPECT_EQ(printed(document), "<?xml version=\"1.1\"?>\n<tarn version=\"9\"></tarn>\n");
}

TEST(HostileTextTest, RootAndDeclarationOutliveATextThatIsReturnedToItsOwner) {
  LibTarnDocument document;
  TarnDomDocument& dom = *document.getItsTarnDomDocument();
  std::vector<char> text = vectorOf("<?xml a='b'?><tarn c='d'>v<cmData type='plan'/></tarn>");
  dom.parse(text);
  for (const char* next : {"", "<tarn", "<?xml", "<p/>", "<tarn"}) {
    text = vectorOf(next);
    try {
      dom.parse(text);
    } catch (const rapidxml::parse_error&) {  // NOLINT(bugprone-empty-catch): any outcome will do
    }
    text.assign(text.size(), 'X');
    text.shrink_to_fit();
    text.clear();
    touchEverything(document);
  }
  dom.parse("<tarn e='f'/>");
  dom.parse("<p/>");
  EXPECT_EQ(printed(document), "<?xml a=\"b\"?>\n<tarn e=\"f\"></tarn>\n");
}

// Bytes that the pool takes for a series of parses.
std::size_t poolGrowth(TarnDomDocument& dom, const std::function<void()>& parse, int count) {
  const std::size_t before = dom.pool_size();
  for (int i = 0; i < count; ++i) parse();
  return dom.pool_size() - before;
}

TEST(HostileTextTest, TextsOfDeclarationAndRootAreCopiedOnceHoweverManyParsesFollow) {
  constexpr std::size_t LONG = std::size_t{1} << 20U;
  const std::string value(LONG, 'x');
  for (const std::string& first : {"<?xml a='" + value + "'?><tarn/>", "<tarn a='" + value + "'/>",
                                   "<tarn a='" + value + "'>" + value, "<?xml a='" + value}) {
    for (const char* const next : {"<tarn", "<p/>", "", "<", "<?xml", "<tarn/><p>"}) {
      SCOPED_TRACE(first.substr(0, 8) + " and " + next);
      CapturedLog log;
      LibTarnDocument document;
      TarnDomDocument& dom = *document.getItsTarnDomDocument();
      document.parse(vectorOf(first), false);
      EXPECT_LT(poolGrowth(
                    dom, [&] { document.parse(next, false); }, 10),
                3 * LONG);
      EXPECT_EQ(tarn_test::brokenDocument(document), "");
      libDomXml::DomDocument& base = dom;
      const boost::shared_ptr<libDomXml::IStripper> none;
      EXPECT_LT(poolGrowth(
                    dom, [&] { base.parse(next, none); }, 10),
                LONG);
    }
  }
}

TEST(HostileTextTest, WorstTextTakesTheDocumentedMemory) {
  constexpr std::size_t MULTIPLE = sizeof(void*) > 4 ? 82 : 44;
  for (const char* const element : {"<c>", "<m>", "<c/>", "<m/>"}) {
    CapturedLog log;
    std::string text = "<tarn>";
    while (text.size() < std::size_t{1} << 20U) text += element;
    LibTarnDocument document;
    document.parse(vectorOf(text), true);
    EXPECT_LT(document.getMemorySize(), MULTIPLE * text.size()) << element;
  }
}

TEST(HostileTextTest, ParsesOfTheDomLayerAreTypedToo) {
  LibTarnDocument document;
  libDomXml::DomDocument& dom = *document.getItsTarnDomDocument();
  EXPECT_EQ(
      dom.parse("<?xml x='1'?><tarn><cmData/></tarn>", boost::shared_ptr<libDomXml::IStripper>()),
      0);
  EXPECT_NE(document.getLibTarnCmData(), nullptr);
  EXPECT_EQ(dom.parse("<foo/>", boost::shared_ptr<libDomXml::IStripper>()), 1);
  touchEverything(document);
  EXPECT_EQ(document.parse("<tarn/>", false), 0);
  EXPECT_EQ(printed(document), "<?xml x=\"1\"?>\n<tarn></tarn>\n");
}

// A host class that overrides rapidParse() and may refuse a text.
struct Refusing : TarnDomDocument {
  Refusing() : TarnDomDocument(nullptr, nullptr) {}
  int rapidParse(char* text) override { return refuses ? 1 : TarnDomDocument::rapidParse(text); }
  bool refuses = false;
};

TEST(HostileTextTest, RefusedTextLeavesNothingOverTheTextBefore) {
  const boost::shared_ptr<libDomXml::IStripper> none;
  for (const bool isCopied : {false, true}) {
    SCOPED_TRACE(isCopied);
    auto* const dom = new Refusing;
    LibTarnDocument document(dom);
    libDomXml::DomDocument& base = *dom;
    EXPECT_EQ(base.parse("<?xml a='b'?><tarn x='y'>v<cmData type='plan'/></tarn><p>w</p>", none),
              0);
    dom->refuses = true;
    std::unique_ptr<char[]> text(new char[1]{'\0'});
    EXPECT_EQ(isCopied ? base.parse("<tarn/>", none) : base.parse(std::move(text)), 1);
    EXPECT_EQ(document.getLibTarnCmData(), nullptr);
    EXPECT_EQ(base.getFirstChild("p"), nullptr);
    EXPECT_EQ(tarn_test::brokenDocument(document), "");
    EXPECT_EQ(printed(document), "<?xml a=\"b\"?>\n<tarn x=\"y\"></tarn>\n");
  }
}

TEST(HostileTextTest, OwnMemoryOfAHostIsAskedForEveryNodeAndAttributeOfAText) {
  struct CountingMemory : TarnDomDocument {
    CountingMemory() : TarnDomDocument(nullptr, nullptr) {}
    void* allocateMemory(unsigned int size) override {
      ++requests;
      return TarnDomDocument::allocateMemory(size);
    }
    std::size_t requests = 0;
  };
  auto* const dom = new CountingMemory;
  LibTarnDocument document(dom);
  for (const char* const tag :
       {"managedObject", "cmData", "header", "log", "list", "p", "item", "extension"}) {
    std::string text = "<" + std::string(tag) + " x='1' y='2'/>";
    dom->requests = 0;
    EXPECT_EQ(dom->rapidParse(text.data()), 0);
    EXPECT_GE(dom->requests, 3U) << tag;
  }
}

TEST(HostileTextTest, NameOfANodeThatAHostUsesAgainIsThatOfTheNewText) {
  struct Recycling : TarnDomDocument {
    Recycling() : TarnDomDocument(nullptr, nullptr) {}
    TarnDomElement* allocate_node(rapidxml::node_type type, const char* name, const char* value,
                                  std::size_t nameSize, std::size_t valueSize) override {
      if (!only) only = TarnDomDocument::allocate_node(type, name, value, nameSize, valueSize);
      return only;
    }
    TarnDomElement* only = nullptr;
  };
  auto* const dom = new Recycling;
  LibTarnDocument document(dom);
  std::string text = "<managedObject/>";
  EXPECT_EQ(dom->rapidParse(text.data()), 0);
  text = "<anything/>";
  EXPECT_EQ(dom->rapidParse(text.data()), 0);
  EXPECT_EQ(tarn_test::dump(*dom), "{anything}");
}

TEST(HostileTextTest, ElementsAddedBeforeTheFirstParseStayAndArePartOfIt) {
  LibTarnDocument document;
  LibTarnCmData& own = *document.getFactory().createLibTarnCmData(LibTarnCmData::Type::PLAN);
  own.addLibTarnManagedObject(
      *document.getFactory().createLibTarnManagedObject("C", "A-1", nullptr));
  document.addLibTarnCmData(own);
  EXPECT_EQ(document.parse("<tarn><cmData type='actual'/></tarn>", false), 0);
  EXPECT_EQ(document.getLibTarnCmData(), &own);
  EXPECT_EQ(own.getNextSiblingElement()->getType(), LibTarnCmData::Type::ACTUAL);
  EXPECT_EQ(document.parse("<tarn/>", false), 0);
  EXPECT_EQ(document.getLibTarnCmData(), nullptr);
}

TEST(HostileTextTest, TextMayBeInTheDocument) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse("<tarn><cmData type='plan'><managedObject><p>&lt;tarn version='3'/></p>"
                           "</managedObject></cmData></tarn>",
                           false),
            0);
  const Scalar* const inner =
      document.getLibTarnCmData()->getLibTarnManagedObject("")->getScalarParameter("");
  EXPECT_EQ(document.parse(inner->getValue(), false), 0);
  EXPECT_STREQ(document.getVersion(), "3");
}

// Depth

void nestAndCopy(const std::string& tag) {
  constexpr std::size_t depth = 1000000;
  std::string text = "<tarn><cmData type=\"plan\">";
  for (std::size_t i = 0; i < depth; ++i) text += "<" + tag + ">";
  for (std::size_t i = 0; i < depth; ++i) text += "</" + tag + ">";
  text += "</cmData></tarn>";
  tarn_test::runOnSmallStack([&] {
    LibTarnDocument document;
    ASSERT_EQ(document.parse(vectorOf(text), false), 0);
    std::string out;
    rapidxml::print_node(out, document.getItsTarnDomDocument()->getRootElement(),
                         rapidxml::print_no_indenting, 0);
    EXPECT_TRUE(out == text);
    LibTarnDocument other;
    auto* const cmData = dynamic_cast<TarnDomElement*>(document.getLibTarnCmData());
    for (auto* const factory : {&document.getFactory(), &other.getFactory()}) {
      const TarnDomElement* const copy = cmData->clone(*factory);
      out.clear();
      rapidxml::print_node(out, copy, rapidxml::print_no_indenting, 0);
      EXPECT_EQ(out.size() + 13, text.size());
    }
    document.parse("", true);
  });
}

TEST(HostileTextTest, AMillionNestedListsLoadCopyAndPrintOnASmallStack) { nestAndCopy("list"); }
TEST(HostileTextTest, AMillionNestedItemsLoadCopyAndPrintOnASmallStack) { nestAndCopy("item"); }
TEST(HostileTextTest, AMillionNestedObjectsLoadCopyAndPrintOnASmallStack) {
  nestAndCopy("managedObject");
}
TEST(HostileTextTest, AMillionNestedCmDataLoadCopyAndPrintOnASmallStack) { nestAndCopy("cmData"); }

TEST(HostileTextTest, FiveThousandLevelsPrintIndentedOnASmallStack) {
  std::string text = "<tarn>";
  for (int i = 0; i < 5000; ++i) text += "<list>";
  for (int i = 0; i < 5000; ++i) text += "</list>";
  text += "</tarn>";
  tarn_test::runOnSmallStack([&] {
    LibTarnDocument document;
    ASSERT_EQ(document.parse(text.c_str(), true), 2);
    EXPECT_GT(printed(document).size(), 2U * 5000 * 5000 / 2);
  });
}

// Random bytes

TEST(HostileTextTest, RandomPiecesNeverBreakADocument) {
  const std::vector<std::string> pieces = {
      "<tarn>",
      "</tarn>",
      "<cmData type='plan'>",
      "</cmData>",
      "<managedObject distName='A-1'>",
      "<managedObject class='C' distName='B-1' operation='update'>",
      "</managedObject>",
      "<p name='x'>",
      "<p>",
      "</p>",
      "<list name='l'>",
      "</list>",
      "<item>",
      "</item>",
      "<extension name='e'>",
      "</extension>",
      "<header>",
      "</header>",
      "<log action='a'>",
      "</log>",
      "<?xml version='1'?>",
      "<t",
      "<",
      ">",
      "/>",
      "&#x0;",
      "&#65;",
      "&lt;",
      "text",
      " ",
      "\"",
      "'",
      "<manag",
      " x",
      "=",
      "''",
      "<!--",
      "-->"};
  for (unsigned seed = 0; seed < 4000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::string text = seed % 2 == 0 ? "<tarn><cmData type='plan'>" : "";
    for (auto i = random() % 30; i > 0; --i) text += pieces[random() % pieces.size()];
    CapturedLog log;
    LibTarnDocument document;
    const int result = document.parse(vectorOf(text), seed % 3 == 0);
    touchEverything(document);
    if (result != 0 && random() % 2 == 0) document.parse(text.c_str(), true);
    touchEverything(document);
    if (LibTarnCmData* const cmData = document.getLibTarnCmData()) {
      for (int i = 0; i < 3; ++i) cmData->removeLibTarnManagedObject(i == 0 ? "A-1" : "B-1");
      try {
        static_cast<void>(dynamic_cast<TarnDomElement*>(cmData)->clone());
      } catch (const exceptions::ModelException&) {
        EXPECT_NE(result, 0);
      }
    }
    touchEverything(document);
  }
}

}  // namespace
