#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "support/CapturedLog.hpp"
#include "support/describe.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::Difference;
using libtarn::editor::DiffOptions;
using libtarn::editor::TarnDiff;
using tarn_test::cmDataText;
using tarn_test::describe;
using tarn_test::documentText;
using tarn_test::loaded;
using tarn_test::objectText;
using tarn_test::rootText;
using Strings = std::vector<std::string>;

Strings described(const std::vector<Difference>& differences) {
  Strings lines;
  for (const Difference& each : differences) lines.push_back(describe(each));
  return lines;
}

Strings compared(const LibTarnDocument& older, const LibTarnDocument& newer,
                 const DiffOptions& options = {}) {
  return described(TarnDiff(older, newer, options).getDifferences());
}

Strings compared(const std::string& older, const std::string& newer,
                 const DiffOptions& options = {}) {
  return compared(*loaded(older), *loaded(newer), options);
}

// Of two objects with these contents.
Strings comparedBodies(const std::string& older, const std::string& newer) {
  return compared(documentText(objectText("A-1", "", older)),
                  documentText(objectText("A-1", "", newer)));
}

LibTarnManagedObject& objectIn(const LibTarnDocument& document, const char* name) {
  return *document.getLibTarnCmData()->getLibTarnManagedObject(name);
}

TEST(TarnDiffTest, EachPartHasItsPathAndValues) {
  const struct {
    const char* older;
    const char* newer;
    Strings differences;
  } CASES[] = {
      {"", "", {}},
      {"<p name='a'>1</p>", "<p name='a'>2</p>", {"~Parameter A-1 a 1 -> 2"}},
      {"<p name='a'>1</p>", "", {"-Parameter A-1 a 1"}},
      {"", "<p name='a'/>", {"+Parameter A-1 a "}},
      {"<p name='b'/><p name='a'/>", "<p name='a'/><p name='b'/>", {}},
      {"<list name='l'><p>1</p><p>2</p></list>",
       "<list name='l'><p>1</p><p>3</p><p>4</p></list>",
       {"~ListValue A-1 l[2] 2 -> 3", "+ListValue A-1 l[3] 4"}},
      {"", "<list name='l'><p>1</p></list>", {"+List A-1 l", "+ListValue A-1 l[1] 1"}},
      {"<list name='l'/>", "", {"-List A-1 l"}},
      {"<list name='l'><p>1</p></list>",
       "<list name='l'><item><p name='c'>1</p></item></list>",
       {"-ListValue A-1 l[1] 1", "+Item A-1 l[1]", "+Component A-1 l[1].c 1"}},
      {"<list name='l'><item><p name='c'>1</p><p name='d'>1</p></item><item/></list>",
       "<list name='l'><item><p name='d'>2</p></item></list>",
       {"-Component A-1 l[1].c 1", "~Component A-1 l[1].d 1 -> 2", "-Item A-1 l[2]"}},
      {"<extension name='e'><p name='c'>1</p></extension>",
       "<extension name='e'><p name='c'>2</p><p name='d'>3</p></extension>",
       {"~ExtensionParameter A-1 e.c 1 -> 2", "+ExtensionParameter A-1 e.d 3"}},
      {"<extension name='e'><p name='c'>1</p></extension>",
       "",
       {"-Extension A-1 e", "-ExtensionParameter A-1 e.c 1"}},
      // What the format does not have.
      {"<p name='a' unit='m'/>", "<p name='a' unit='s'/>", {"~Attribute A-1 a@unit m -> s"}},
      {"<p name='a'/>", "<p name='a' name='b'/>", {"+Attribute A-1 a@name b"}},
      {"<p>1</p>", "<p name=''>1</p>", {"+Attribute A-1 @name "}},
      {"<list name='l'/>", "<list name='l'>x</list>", {"+Text A-1 l.text() x"}},
      {"<p name='a'>1<p>2</p></p>", "<p name='a'>1<p>3</p></p>", {"~Other A-1 a.*"}},
      {"", "<managedObject class='C' distName='B-1'/>", {"+Other A-1 *"}},
      {"<list name='l'><p>1</p></list>",
       "<li name='l'><p>1</p></li>",
       {"+Other A-1 *", "-List A-1 l", "-ListValue A-1 l[1] 1"}},
      {"<list name='l'><item><item/></item></list>",
       "<list name='l'><item/></list>",
       {"-Other A-1 l[1].*"}},
      // Parts in their order.
      {"<extension name='a'/><list name='a'/><p name='b'/><p name='a'/>",
       "text<item/>",
       {"+Text A-1 text() text", "+Other A-1 *", "-Parameter A-1 a ", "-Parameter A-1 b ",
        "-List A-1 a", "-Extension A-1 a"}},
  };
  for (const auto& each : CASES) {
    EXPECT_EQ(comparedBodies(each.older, each.newer), each.differences) << each.older << "\n"
                                                                        << each.newer;
  }
}

TEST(TarnDiffTest, AttributesOfObjectsAreParts) {
  const std::string older = documentText("<managedObject class='C' distName='A-1' version='1'/>");
  const std::string newer = documentText(
      "<managedObject operation='update' version='2' distName='A-1' class='D' x='1' x='2'/>");
  const Strings differences{"~Class A-1 class C -> D", "~Version A-1 version 1 -> 2",
                            "+Attribute A-1 @x 1", "+Attribute A-1 @x 2"};
  EXPECT_EQ(compared(older, newer), differences);
  DiffOptions options;
  options.operations = true;
  EXPECT_EQ(compared(older, newer, options),
            (Strings{differences[0], differences[1], "+Operation A-1 operation update",
                     differences[2], differences[3]}));
}

TEST(TarnDiffTest, ObjectsAreInByteOrderOfTheirNames) {
  const std::string older = documentText(objectText("A-2") + objectText("A-10") +
                                         objectText("B-1", "", "<p name='a'>1</p>"));
  const std::string newer = documentText(objectText("B-1", "", "<p name='a'>2</p>") +
                                         objectText("A-3") + objectText("A-1"));
  EXPECT_EQ(compared(older, newer), (Strings{"+Object A-1 ", "-Object A-10 ", "-Object A-2 ",
                                             "+Object A-3 ", "~Parameter B-1 a 1 -> 2"}));
}

TEST(TarnDiffTest, DifferenceHoldsTheObjects) {
  const auto older = loaded(documentText(objectText("A-1") + objectText("A-2", "", "<p/>")));
  const auto newer = loaded(documentText(objectText("A-2") + objectText("A-3")));
  const TarnDiff diff(*older, *newer);
  ASSERT_EQ(diff.getDifferences().size(), 3U);
  EXPECT_EQ(diff.getDifferences()[0].oldObject, &objectIn(*older, "A-1"));
  EXPECT_EQ(diff.getDifferences()[0].newObject, nullptr);
  EXPECT_EQ(diff.getDifferences()[1].oldObject, &objectIn(*older, "A-2"));
  EXPECT_EQ(diff.getDifferences()[1].newObject, &objectIn(*newer, "A-2"));
  EXPECT_EQ(diff.getDifferences()[2].oldObject, nullptr);
  EXPECT_EQ(diff.getDifferences()[2].newObject, &objectIn(*newer, "A-3"));
}

TEST(TarnDiffTest, ContentsOfAnObjectAreDifferences) {
  const auto document = loaded(
      documentText(objectText("A-1", "create", "<p name='a'>1</p><list name='l'><p>2</p></list>")));
  const LibTarnManagedObject& object = objectIn(*document, "A-1");
  EXPECT_EQ(described(TarnDiff::contentsOf(object, Difference::Kind::Added)),
            (Strings{"+Class A-1 class C", "+Version A-1 version 1", "+Parameter A-1 a 1",
                     "+List A-1 l", "+ListValue A-1 l[1] 2"}));
  EXPECT_EQ(described(TarnDiff::contentsOf(object, Difference::Kind::Removed, true))[2],
            "-Operation A-1 operation create");
}

TEST(TarnDiffTest, EnvelopeIsComparedUnlessItIsLeftOut) {
  const std::string older = "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'/></tarn>";
  const std::string newer =
      "<tarn xmlns='tarn21.xsd' version='2.2'>x<cmData id='7' type='actual'><p/></cmData></tarn>";
  EXPECT_EQ(compared(older, newer),
            (Strings{"~Attribute  tarn@version 2.1 -> 2.2", "+Text  tarn.text() x",
                     "+Attribute  cmData@id 7", "~Attribute  cmData@type plan -> actual",
                     "+Other  cmData.*"}));
  DiffOptions options;
  options.envelope = false;
  EXPECT_EQ(compared(older, newer, options), (Strings{"+Text  tarn.text() x", "+Other  cmData.*"}));
}

TEST(TarnDiffTest, LogsAreComparedOnlyWhenAskedFor) {
  const auto header = [](int from, int to) {
    std::string text = "<header>";
    for (int i = from; i < to; ++i) {
      text += "<log action='a' dateTime='d'>" + std::to_string(i) + "</log>";
    }
    return documentText("", text + "</header>");
  };
  EXPECT_EQ(compared(header(0, 3), header(0, 4)), Strings());
  DiffOptions options;
  options.logs = true;
  const auto added = [](const std::string& position, const std::string& text) {
    return Strings{"+Log  log[" + position + "] " + text,
                   "+Attribute  log[" + position + "]@action a",
                   "+Attribute  log[" + position + "]@dateTime d"};
  };
  EXPECT_EQ(compared(header(0, 3), header(0, 3), options), Strings());
  EXPECT_EQ(compared(header(0, 3), header(0, 4), options), added("4", "3"));
  EXPECT_EQ(compared(header(1, 3), header(0, 3), options), added("1", "0"));
  // Entries that a full header has lost are those at its beginning.
  Strings moved{"-Log  log[1] 0", "-Attribute  log[1]@action a", "-Attribute  log[1]@dateTime d"};
  for (const std::string& line : added("50", "50")) moved.push_back(line);
  EXPECT_EQ(compared(header(0, 50), header(1, 51), options), moved);
  EXPECT_EQ(compared(documentText("", ""), documentText(""), options),
            (Strings{"+Header  header"}));
}

// The parser leaves the same bytes of each two of these texts.
TEST(TarnDiffTest, TextsThatLookAlikeAfterAParseAreDifferent) {
  const struct {
    const char* older;
    const char* newer;
    Strings differences;
  } CASES[] = {
      {"<list name='l'><p >1</p></list>",
       "<list name='l'><p>>1</p></list>",
       {"~ListValue A-1 l[1] 1 -> >1"}},
      {"<p name=\"a>12\">12\">z</p>",
       "<p name=\"&#97;>12\">z</p>",
       {"~Parameter A-1 a>12 12\">z -> z"}},
  };
  for (const auto& each : CASES) {
    EXPECT_EQ(comparedBodies(each.older, each.newer), each.differences);
  }
}

// Documents that a load accepts, or leaves, or that a host made

TEST(TarnDiffTest, DocumentWithoutBodyIsEmpty) {
  EXPECT_EQ(compared(rootText(""), rootText("")), Strings());
  EXPECT_EQ(compared(LibTarnDocument(), LibTarnDocument()), Strings());
  EXPECT_EQ(compared(rootText(""), documentText(objectText("A-1"))),
            (Strings{"+Body  cmData", "+Attribute  cmData@type plan", "+Object A-1 "}));
}

TEST(TarnDiffTest, SecondBodyIsComparedToTheSecondOne) {
  const auto body = [](const std::string& content) {
    return "<cmData type='plan'>" + content + "</cmData>";
  };
  EXPECT_EQ(compared(rootText(body(objectText("B-1")) + body(objectText("A-1"))),
                     rootText(body("") + body(objectText("A-1", "", "<p/>")) + body(""))),
            (Strings{"-Object B-1 ", "+Parameter A-1  ", "+Body  cmData[3]",
                     "+Attribute  cmData[3]@type plan"}));
}

TEST(TarnDiffTest, ObjectWithoutNameIsComparedAsTheOneWithoutName) {
  const std::string none = documentText("<managedObject class='C'/>");
  EXPECT_EQ(compared(none, none), Strings());
  EXPECT_EQ(compared(none, documentText("<managedObject class='D' distName=''/>")),
            (Strings{"~Class  class C -> D", "+Attribute  @distName "}));
}

TEST(TarnDiffTest, EditsOfAHostAreDifferences) {
  const std::string text = documentText(
      objectText("A-1", "",
                 "<p name='a'>1</p><list name='l'><item><p name='c'>1</p></item></list>"
                 "<extension name='e'><p name='c'>1</p></extension>") +
      objectText("A-2") + objectText("A-3"));
  const auto original = loaded(text);
  using Edit = void (*)(LibTarnDocument & document, LibTarnManagedObject & object);
  const struct {
    Edit edit;
    Strings differences;
  } CASES[] = {
      {[](LibTarnDocument&, LibTarnManagedObject& object) {
         object.getScalarParameter("a")->setValue("2");
       },
       {"~Parameter A-1 a 1 -> 2"}},
      {[](LibTarnDocument&, LibTarnManagedObject& object) { object.removeScalarParameter("a"); },
       {"-Parameter A-1 a 1"}},
      // Without the index of the object.
      {[](LibTarnDocument&, LibTarnManagedObject& object) {
         object.getScalarParameter("a")->removeThisElement();
       },
       {"-Parameter A-1 a 1"}},
      {[](LibTarnDocument&, LibTarnManagedObject& object) { object.setVersion("2"); },
       {"~Version A-1 version 1 -> 2"}},
      {[](LibTarnDocument& document, LibTarnManagedObject& object) {
         object.addParameter(*document.getFactory().createScalar("b", "2"));
       },
       {"+Parameter A-1 b 2"}},
      {[](LibTarnDocument&, LibTarnManagedObject& object) {
         object.getListParameter("l")->getStructuredValues()->getComponent("c")->setValue("2");
       },
       {"~Component A-1 l[1].c 1 -> 2"}},
      {[](LibTarnDocument&, LibTarnManagedObject& object) {
         object.getExtension("e")->removeParameter("c");
       },
       {"-ExtensionParameter A-1 e.c 1"}},
      {[](LibTarnDocument&, LibTarnManagedObject& object) {
         dynamic_cast<LibTarnManagedObjectImp&>(object).removeAttribute("version");
       },
       {"-Version A-1 version 1"}},
      {[](LibTarnDocument&, LibTarnManagedObject& object) {
         dynamic_cast<ScalarImp&>(*object.getScalarParameter("a")).setTagName("q");
       },
       {"+Other A-1 *", "-Parameter A-1 a 1"}},
      // Through the records below the elements.
      {[](LibTarnDocument&, LibTarnManagedObject& object) {
         dynamic_cast<ScalarImp&>(*object.getScalarParameter("a"))
             .first_attribute("name")
             ->value("z");
       },
       {"-Parameter A-1 a 1", "+Parameter A-1 z 1"}},
      {[](LibTarnDocument&, LibTarnManagedObject& object) {
         rapidxml::xml_base<char>& record = dynamic_cast<LibTarnManagedObjectImp&>(object);
         record.value("text");
       },
       {"+Text A-1 text() text"}},
      {[](LibTarnDocument&, LibTarnManagedObject& object) {
         auto& element = dynamic_cast<LibTarnManagedObjectImp&>(object);
         auto* const list =
             dynamic_cast<ScalarImp&>(*object.getScalarParameter("a")).next_sibling();
         element.remove_node(list);
         element.append_node(list);
       },
       {}},
      // Moved to another object.
      {[](LibTarnDocument& document, LibTarnManagedObject& object) {
         auto& parameter = dynamic_cast<ScalarImp&>(*object.getScalarParameter("a"));
         dynamic_cast<LibTarnManagedObjectImp&>(object).remove_node(&parameter);
         dynamic_cast<LibTarnManagedObjectImp&>(objectIn(document, "A-2")).append_node(&parameter);
       },
       {"-Parameter A-1 a 1", "+Parameter A-2 a 1"}},
      {[](LibTarnDocument& document, LibTarnManagedObject&) {
         objectIn(document, "A-2").setDistName("A-4");
       },
       {"-Object A-2 ", "+Object A-4 "}},
      // Two objects of one name, of which the index has one.
      {[](LibTarnDocument& document, LibTarnManagedObject&) {
         objectIn(document, "A-2").setDistName("A-3");
       },
       {"-Object A-2 ", "+Object A-3 "}},
      // The index still has it.
      {[](LibTarnDocument&, LibTarnManagedObject& object) { object.removeThisElement(); },
       {"-Object A-1 "}},
      {[](LibTarnDocument& document, LibTarnManagedObject& object) {
         object.removeThisElement();
         auto& body = dynamic_cast<LibTarnCmDataImp&>(*document.getLibTarnCmData());
         body.append_node(&dynamic_cast<LibTarnManagedObjectImp&>(object));
       },
       {}},
      // Elements that are not of the model count as their texts would.
      {[](LibTarnDocument& document, LibTarnManagedObject& object) {
         auto* const element = document.getItsTarnDomDocument()->createDomElement("p", "2");
         element->setAttribute("name", "b");
         dynamic_cast<LibTarnManagedObjectImp&>(object).addChild(element);
       },
       {"+Parameter A-1 b 2"}},
      {[](LibTarnDocument& document, LibTarnManagedObject&) {
         auto& body = dynamic_cast<LibTarnCmDataImp&>(*document.getLibTarnCmData());
         body.addChild(document.getItsTarnDomDocument()->createDomElement("managedObject", ""));
       },
       {"+Other  cmData.*"}},
  };
  const tarn_test::CapturedLog log;
  for (std::size_t i = 0; i < std::size(CASES); ++i) {
    SCOPED_TRACE("case " + std::to_string(i));
    const auto edited = loaded(text);
    CASES[i].edit(*edited, objectIn(*edited, "A-1"));
    EXPECT_EQ(compared(*original, *edited), CASES[i].differences);
    EXPECT_EQ(compared(*edited, *original).size(), CASES[i].differences.size());
    EXPECT_EQ(compared(*edited, *edited), Strings());
  }
}

TEST(TarnDiffTest, DocumentThatALoadRefusedIsComparedAsFarAsItIsThere) {
  const std::string text = documentText(objectText("A-1") + objectText("A-1", "", "<p/>"));
  const tarn_test::CapturedLog log;
  LibTarnDocument refused;
  ASSERT_EQ(refused.parse(text.c_str(), false), ParseResult::BrokenRule);
  EXPECT_EQ(compared(*loaded(documentText(objectText("A-1"))), refused), (Strings{"+Object A-1 "}));
  EXPECT_EQ(compared(refused, refused), Strings());
}

TEST(TarnDiffTest, SecondParseIsCompared) {
  const auto document = loaded(documentText(objectText("A-1", "", "<p name='a'>1</p>")));
  const auto other = loaded(documentText(objectText("A-1", "", "<p name='a'>1</p>")));
  const tarn_test::CapturedLog log;
  ASSERT_EQ(other->parse(documentText(objectText("A-1", "", "<p name='a'>2</p>")).c_str(), true),
            ParseResult::Done);
  EXPECT_EQ(compared(*document, *other), (Strings{"~Parameter A-1 a 1 -> 2"}));
}

TEST(TarnDiffTest, DepthOfADocumentIsNoStack) {
  std::string nested;
  for (int i = 0; i < 200000; ++i) nested += "<item>";
  std::string other = nested + "1";
  for (int i = 0; i < 200000; ++i) {
    nested += "</item>";
    other += "</item>";
  }
  EXPECT_EQ(comparedBodies(nested, other), (Strings{"~Other A-1 *"}));
  EXPECT_EQ(comparedBodies(nested, nested), Strings());
}

}  // namespace
