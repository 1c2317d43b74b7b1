#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <numeric>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "support/HeapCount.hpp"
#include "support/documents.hpp"
#include "text/textHash.hpp"

// A load indexes and checks most objects during the parse. This must make no difference: every
// document behaves as if it had been indexed in document order after the parse, and then validated
// by a walk in the order of names.

namespace {

using namespace libtarn::model;

struct Outcome {
  int code = 0;
  std::string message;
};

Outcome loadAtOnce(LibTarnDocument& document, const std::string& text, bool validate) {
  Outcome outcome;
  outcome.code = document.parse(text.c_str(), validate);
  outcome.message = document.getDiagnostic().message;
  return outcome;
}

Outcome loadInSteps(LibTarnDocument& document, const std::string& text, bool validate) {
  TarnDomDocument& dom = *document.getItsTarnDomDocument();
  try {
    dom.parse(text.c_str());
    dom.getRootElement()->rebuildIndexersAndInitializeEnums();
    validation::Validator validator;
    if (validate) dom.getRootElement()->accept(validator);
  } catch (const rapidxml::parse_error& error) {
    return {1, error.what()};
  } catch (const exceptions::ModelException& error) {
    return {2, error.what()};
  }
  return {};
}

// What a host sees of all indexes.
std::string dump(const LibTarnDocument& document) {
  std::string text;
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (!cmData) return "no cmData";
  text += cmData->getType().toString() + " " + std::to_string(cmData->getManagedObjectNumber());
  for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
    const char* const name = object->getDistName().getText();
    text += std::string("\n") + (name ? name : "(none)") + " " + object->getOperation().toString();
    if (name) {
      EXPECT_EQ(cmData->getLibTarnManagedObject(name), object);
    }
    for (const auto& scalar : object->getScalarParameters()) {
      EXPECT_EQ(object->getScalarParameter(scalar.first), scalar.second);
      text += std::string(" ") + scalar.first + "=" + scalar.second->getValue();
    }
    for (const auto& list : object->getListParameters()) {
      text += std::string(" list ") + list.first;
      for (const Structure* item = list.second->getStructuredValues(); item;
           item = item->getNextSiblingElement()) {
        for (const auto& component : item->getComponents()) {
          text += std::string(" ") + component.first + ":" + component.second->getValue();
        }
      }
    }
  }
  for (const char* className : {"A", "B", "C"}) {
    text += std::string("\nclass ") + className;
    for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjectsByClass(className)) {
      const char* const name = object->getDistName().getText();
      text += std::string(" ") + (name ? name : "(none)");
    }
  }
  return text;
}

void expectSame(const std::string& text) {
  for (const bool validate : {false, true}) {
    LibTarnDocument atOnce;
    LibTarnDocument inSteps;
    const Outcome first = loadAtOnce(atOnce, text, validate);
    const Outcome second = loadInSteps(inSteps, text, validate);
    ASSERT_EQ(first.code, second.code) << text;
    ASSERT_EQ(first.message, second.message) << text;
    ASSERT_EQ(dump(atOnce), dump(inSteps)) << text;
  }
}

std::string cmData(const std::string& content) { return tarn_test::cmDataText(content, "actual"); }

TEST(LoadTest, DocumentsOfEachKindOfFault) {
  const std::string good =
      "<managedObject class='A' distName='A-1'><p name='x'>1</p></managedObject>";
  const std::string header = "<header><log dateTime='d' action='a'/></header>";
  for (const std::string& content : {
           header + good,
           header,
           good,
           header + header + good,
           std::string("<header><log action='a'/></header>") + good,
           header + good + good,
           header + good + "<managedObject class='A' distName='A-2' operation='no'/>" + good,
           header + "<managedObject class='A' distName='A-2' operation='update'/>" + good,
           header + "<managedObject distName='A-1'/>",
           header + "<managedObject class='A'/>",
           header + "<managedObject class='A'/><managedObject class='B'/>",
           header + "<managedObject class='A' distName='wrong'/>" + good,
           header +
               "<managedObject class='A' distName='A-1'><p name='x'/><p name='x'/></managedObject>",
           header + "<managedObject class='A' distName='A-1'><p>1</p></managedObject>",
           header + "<managedObject class='A' distName='A-1'><p>1</p><p name=''/></managedObject>",
           header + "<managedObject class='A' distName='A-1'><list "
                    "name='l'><p>1</p><item/></list></managedObject>",
           header + "<managedObject class='A' distName='A-1'><list/></managedObject>",
           header + "<managedObject class='A' distName='A-1'><list name='l'/><list "
                    "name='l'/></managedObject>",
           header + "<managedObject class='A' distName='A-1'><list name='l'><item><p name='a'/><p "
                    "name='a'/></item></list></managedObject>",
           header + "<managedObject class='A' distName='A-1'><list "
                    "name='l'><item><p/></item></list></managedObject>",
           header + "<managedObject class='A' distName='A-1'><extension "
                    "name='e'><p/></extension></managedObject>",
           header + "<managedObject class='A' distName='A-1'><item><p name='a'/><p "
                    "name='a'/></item></managedObject>",
           header + "<manag class='A' distName='A-1'/>" + good,
           header + "<managedObject class='A' distName='A-1'><lis name='l'/><li "
                    "name='l'/></managedObject>",
           header + "<managedObject class='A' distName='A-1'><p name='x&#0;y'/><p "
                    "name='x&#0;z'/></managedObject>",
           header + "<managedObject class='A' distName='A-1&#0;2'/><managedObject class='A' "
                    "distName='A-1&#0;3'/>",
           header + "<extension><managedObject class='A' distName='A-1'><p "
                    "name='x'/></managedObject></extension>",
           header + "<cmData type='plan'>" + good + "</cmData>" + good,
           header + "<managedObject class='A' distName='A-1'><cmData type='plan'>" + good +
               "</cmData></managedObject>",
       }) {
    SCOPED_TRACE(content);
    expectSame(cmData(content));
  }
  expectSame("<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'>" + header +
             "</cmData></tarn>");
  expectSame("<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'>" + header + good +
             "</cmData></tarn>");
  expectSame("<tarn xmlns='tarn21.xsd' version='2.1'><cmData>" + header + good +
             "</cmData></tarn>");
  expectSame("<tarn version='2.1'><cmData type='plan'>" + header + good + "</cmData></tarn>");
  expectSame("<tarn xmlns='x' version='2.1'><cmData type='plan'>" + header + good +
             "</cmData></tarn>");
  expectSame("<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'>" + header + good +
             "</cmData><cmData type='actual'>" + header + good + good + "</cmData></tarn>");
}

// True if the load alone shows that the document is valid.
bool isKnownToBeValid(const std::string& text) {
  int readings = 0;
  const Diagnostic found = LibTarnDocument::validate([&] {
    ++readings;
    return std::vector<char>(text.c_str(), text.c_str() + text.size() + 1);
  });
  LibTarnDocument document;
  EXPECT_EQ(document.parse(text.c_str(), true), found.code);
  EXPECT_EQ(document.getDiagnostic().message, found.message);
  EXPECT_EQ(document.getDiagnostic().offset, found.offset);
  EXPECT_TRUE(readings == 1 || readings == 2);
  return readings == 1;
}

class RandomContent {
 public:
  explicit RandomContent(unsigned seed) : random_(seed) {}

  std::string document() {
    std::string content = rare(20) ? "" : header();
    const std::size_t count = random_() % 6;
    for (std::size_t i = 0; i < count; ++i) content += element(0);
    if (rare(30)) content += header();
    return cmData(content);
  }

 private:
  bool rare(unsigned oneIn) { return random_() % oneIn == 0; }
  std::string pick(std::initializer_list<const char*> texts) {
    return *(texts.begin() + random_() % texts.size());
  }

  std::string header() { return rare(10) ? "<header><log action='a'/></header>" : "<header/>"; }

  std::string name() {
    if (rare(25)) return "";
    return " name='" + pick({"x", "y", "longerName", "longerMane", "z1", "z2", "z3", "z4"}) +
           std::to_string(random_() % 40) + "'";
  }

  std::string element(int depth) {
    const auto kind = depth == 0 && !rare(15) ? 0 : random_() % 6;
    const bool leaf = depth > 4;
    if (kind == 0) {
      std::string text = "<managedObject";
      if (!rare(30)) text += " class='" + pick({"A", "B", "C"}) + "'";
      if (!rare(30))
        text += " distName='" + (rare(30) ? "bad" : "A-" + std::to_string(random_() % 50)) + "'";
      if (rare(4))
        text += " operation='" + (rare(10) ? "bad" : pick({"create", "update", "delete"})) + "'";
      return text + ">" + (leaf ? "" : children(depth)) + "</managedObject>";
    }
    if (kind == 1) return "<list" + name() + ">" + (leaf ? "" : listContent(depth)) + "</list>";
    if (kind == 2)
      return "<extension" + name() + ">" + (leaf ? "" : children(depth)) + "</extension>";
    if (kind == 3 && rare(8)) return "<item>" + (leaf ? "" : children(depth)) + "</item>";
    return "<p" + name() + ">" + std::to_string(random_() % 100) + "</p>";
  }

  std::string children(int depth) {
    std::string text;
    const std::size_t count = rare(6) ? random_() % 60 : random_() % 6;
    for (std::size_t i = 0; i < count; ++i)
      text += rare(3) ? element(depth + 1) : "<p" + name() + "/>";
    return text;
  }

  std::string listContent(int depth) {
    std::string text;
    const bool items = rare(2);
    const std::size_t count = random_() % 4;
    for (std::size_t i = 0; i < count; ++i) {
      text += items != rare(30) ? "<item>" + children(depth + 2) + "</item>" : "<p>1</p>";
    }
    return text;
  }

  std::mt19937 random_;
};

TEST(LoadTest, RandomDocumentsBehaveAsIfIndexedInOrder) {
  std::size_t good = 0;
  std::size_t known = 0;
  for (unsigned seed = 1; seed <= 3000; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const std::string text = RandomContent(seed).document();
    expectSame(text);
    if (HasFatalFailure()) return;
    LibTarnDocument document;
    const bool isGood = document.parse(text.c_str(), true) == 0;
    const bool isKnown = isKnownToBeValid(text);
    ASSERT_TRUE(isGood || !isKnown) << text;
    good += isGood ? 1 : 0;
    known += isKnown ? 1 : 0;
  }
  EXPECT_GT(good, 100U);
  EXPECT_LT(good, 2900U);
  EXPECT_GT(known, good / 2);
}

TEST(LoadTest, ValidDocumentsAreKnownWithoutADocument) {
  std::string objects;
  for (int i = 0; i < 3000; ++i) {
    // The same names again and again, in no order, and objects larger than a block of the pool.
    objects += "<managedObject class='A' distName='A-" + std::to_string(i) +
               "' operation='update'><p name='z'/><p name='b'/><p name='y'/><p name='a'/><p "
               "name='c'>" +
               std::string(i == 1500 ? 300000 : 10, 'x') +
               "</p><list name='l'><item><p name='x'/></item></list></managedObject>";
  }
  EXPECT_TRUE(isKnownToBeValid(cmData("<header/>" + objects)));
  EXPECT_TRUE(isKnownToBeValid("<?xml version='1.0'?><!-- c -->" + cmData("<header/>" + objects)));
  // The last one of each is not valid.
  EXPECT_FALSE(isKnownToBeValid(cmData(objects)));
  EXPECT_FALSE(isKnownToBeValid(
      cmData("<header/>" + objects + "<managedObject class='A' distName='A-7'/>")));
  EXPECT_FALSE(
      isKnownToBeValid(cmData("<header/>" + objects + "<managedObject class='A' distName='A'/>")));
  EXPECT_FALSE(isKnownToBeValid(cmData("<header/>" + objects + "<managedObject distName='B-1'/>")));
  EXPECT_FALSE(isKnownToBeValid(cmData("<header/>" + objects +
                                       "<managedObject class='A' distName='B-1'><p name='a'/><p "
                                       "name='a'/></managedObject>")));
  EXPECT_FALSE(isKnownToBeValid(cmData("<header/>" + objects + "<foo/>")));
  EXPECT_FALSE(isKnownToBeValid(cmData("<header/>" + objects) + "<"));
  EXPECT_FALSE(isKnownToBeValid(""));
  EXPECT_EQ(LibTarnDocument::validate([] { return std::vector<char>(); }).code, 1);
}

TEST(LoadTest, RememberedNamesAreTheSameToTheLastByte) {
  // Sequences that differ in one byte of one name, with lengths around multiples of a word.
  const std::size_t sizes[] = {1, 7, 8, 9, 15, 16, 17, 24, 31, 33};
  for (const std::size_t size : sizes) {
    for (std::size_t place = 0; place < size; ++place) {
      // Another one, after the usual name and before the other one.
      std::string between(size, 'n');
      between[place] = 'o';
      std::string other(size, 'n');
      other[place] = 'p';
      const auto object = [&](int number, const std::string& last) {
        return "<managedObject class='A' distName='A-" + std::to_string(number) +
               "'><p name='z'>1</p><p name='b'/><p name='" + between + "'>3</p><p name='" + last +
               "'>2</p></managedObject>";
      };
      const std::string same(size, 'n');
      LibTarnDocument document;
      ASSERT_EQ(document.parse(cmData("<header/>" + object(1, same) + object(2, same) +
                                      object(3, other) + object(4, same))
                                   .c_str(),
                               true),
                0);
      const LibTarnCmData& data = *document.getLibTarnCmData();
      for (int i = 1; i <= 4; ++i) {
        const auto& each = *data.getLibTarnManagedObject(("A-" + std::to_string(i)).c_str());
        const std::string& last = i == 3 ? other : same;
        ASSERT_NE(each.getScalarParameter(last.c_str()), nullptr);
        ASSERT_STREQ(each.getScalarParameter(last.c_str())->getValue(), "2");
        ASSERT_STREQ(each.getScalarParameter("z")->getValue(), "1");
        ASSERT_STREQ(each.getScalarParameter(between.c_str())->getValue(), "3");
        ASSERT_EQ(each.getScalarParameter((i == 3 ? same : other).c_str()), nullptr);
      }
    }
  }
}

// The next object mostly has the names of the last one of its class, except for one.
TEST(LoadTest, SequencesOfNamesThatNearlyComeAgain) {
  std::mt19937 random(7);
  const auto parameters = [](const std::vector<int>& names) {
    std::string text;
    for (const int name : names) text += "<p name='parameter" + std::to_string(name) + "'/>";
    return text;
  };
  for (int round = 0; round < 400; ++round) {
    std::vector<int> usual(1 + random() % 36);
    std::iota(usual.begin(), usual.end(), 0);
    std::shuffle(usual.begin(), usual.end(), random);
    std::string content = "<header/>";
    for (int i = 0; i < 8; ++i) {
      std::vector<int> names = usual;
      const std::size_t place = random() % names.size();
      switch (random() % 9) {
        case 0:
          names.resize(place);
          break;
        case 1:
          names.erase(names.begin() + static_cast<std::ptrdiff_t>(place));
          break;
        case 2:
          names.push_back(100);
          break;
        case 3:
          std::swap(names[place], names.back());
          break;
        case 4:
          if (round % 8 == 0) names.push_back(names[place]);
          break;
        case 5:
          names[place] = 200;
          break;
        default:
          break;
      }
      content += "<managedObject class='A' distName='A-" + std::to_string(i) + "'>" +
                 parameters(names) + "<list name='l'><item>" + parameters(names) +
                 "</item></list></managedObject>";
    }
    expectSame(cmData(content));
  }
}

TEST(LoadTest, DocumentWithoutARootLoadsWhatNeedsNone) {
  TarnDomDocument dom;
  LibTarnDocumentInternal root(&dom);
  root.parse("<p name='x'/>");
  EXPECT_NE(dom.first_node(), nullptr);
  EXPECT_THROW(root.parse("<tarn/>"), rapidxml::parse_error);
}

TEST(LoadTest, NothingIsFoundBeforeTheIndexesAreBuilt) {
  const std::string text = cmData(
      "<managedObject class='A' distName='A-1' operation='create'><p name='x'/></managedObject>");
  LibTarnDocument document;
  document.getItsTarnDomDocument()->parse(text.c_str());
  const LibTarnCmData& data = *document.getLibTarnCmData();
  EXPECT_EQ(data.getManagedObjectNumber(), 0U);
  auto* const object =
      dynamic_cast<LibTarnManagedObject*>(data.getFirstChildElement("managedObject"));
  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->getScalarParameter("x"), nullptr);
  EXPECT_EQ(object->getOperation(), LibTarnManagedObject::Operation::AUTO);
  document.getItsTarnDomDocument()->getRootElement()->rebuildIndexersAndInitializeEnums();
  EXPECT_NE(object->getScalarParameter("x"), nullptr);
  EXPECT_EQ(object->getOperation(), LibTarnManagedObject::Operation::CREATE);
}

TEST(LoadTest, ObjectsAfterAFaultAreNotIndexed) {
  const std::string object =
      "<managedObject class='A' distName='A-1'><p name='x'/></managedObject>";
  LibTarnDocument document;
  EXPECT_EQ(document.parse(cmData(object + object +
                                  "<managedObject class='A' distName='A-2' operation='update'>"
                                  "<p name='x'/></managedObject>")
                               .c_str(),
                           false),
            2);
  const LibTarnCmData& data = *document.getLibTarnCmData();
  EXPECT_EQ(data.getManagedObjectNumber(), 1U);
  const LibTarnManagedObject* last = data.getLibTarnManagedObject("A-1");
  ASSERT_NE(last, nullptr);
  EXPECT_NE(last->getScalarParameter("x"), nullptr);
  const IElement* const behind = last->getNextSiblingElement()->getNextSiblingElement();
  const auto* const unindexed = dynamic_cast<const LibTarnManagedObject*>(behind);
  ASSERT_NE(unindexed, nullptr);
  EXPECT_EQ(unindexed->getScalarParameter("x"), nullptr);
  EXPECT_EQ(unindexed->getOperation(), LibTarnManagedObject::Operation::AUTO);
}

// Names that all have the same slot of the hash tables.
std::vector<std::string> crowdingNames(const std::string& prefix, std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t i = 0; names.size() < count; ++i) {
    std::string name = prefix + std::to_string(i);
    if ((indexation::textHash(name.data(), name.size()) & 0xFFFU) == 7) {
      names.push_back(std::move(name));
    }
  }
  return names;
}

TEST(LoadTest, NamesThatCrowdTheHashTablesAreFoundAllTheSame) {
  const std::vector<std::string> objects = crowdingNames("A-", 400);
  const std::vector<std::string> parameters = crowdingNames("p", 400);
  std::string content;
  for (const std::string& name : objects) {
    content += "<managedObject class='A' distName='" + name + "'/>";
  }
  content += "<managedObject class='B' distName='B-1'>";
  for (const std::string& name : parameters) content += "<p name='" + name + "'/>";
  content += "</managedObject>";
  LibTarnDocument document;
  ASSERT_EQ(document.parse(cmData("<header/>" + content).c_str(), true), 0);
  LibTarnCmData& data = *document.getLibTarnCmData();
  EXPECT_EQ(data.getManagedObjectNumber(), objects.size() + 1);
  for (const std::string& name : objects) {
    ASSERT_NE(data.getLibTarnManagedObject(name.c_str()), nullptr) << name;
  }
  LibTarnManagedObject& object = *data.getLibTarnManagedObject("B-1");
  for (const std::string& name : parameters) {
    ASSERT_NE(object.getScalarParameter(name.c_str()), nullptr) << name;
  }
  // The walk by class, and the validation, visit each of them.
  const auto ofClass = data.getLibTarnManagedObjectsByClass("A");
  EXPECT_EQ(static_cast<std::size_t>(std::distance(ofClass.begin(), ofClass.end())),
            objects.size());
  auto& wrong = dynamic_cast<TarnDomElement&>(*data.getLibTarnManagedObject(objects[7].c_str()));
  wrong.removeAttribute("class");
  EXPECT_EQ(document.validate(), 2);
  wrong.setAttribute("class", "A");
  EXPECT_EQ(document.validate(), 0);
  // Also an object that only the index still has.
  LibTarnManagedObject& unlinked = *data.getLibTarnManagedObject(objects[8].c_str());
  unlinked.removeThisElement();
  dynamic_cast<TarnDomElement&>(unlinked).removeAttribute("class");
  EXPECT_EQ(document.validate(), 2);
  EXPECT_EQ(data.removeLibTarnManagedObject(objects[5].c_str()), 0);
  EXPECT_EQ(data.getLibTarnManagedObject(objects[5].c_str()), nullptr);
  EXPECT_EQ(data.removeLibTarnManagedObject(objects[5].c_str()), 2);
  content += "<managedObject class='B' distName='" + objects[9] + "'/>";
  LibTarnDocument twice;
  EXPECT_EQ(twice.parse(cmData("<header/>" + content).c_str(), true), 2);
}

TEST(LoadTest, OneByOneAddedNamesThatCrowdAreFoundAllTheSame) {
  LibTarnDocument document;
  ASSERT_EQ(document.parse(cmData("").c_str(), false), 0);
  LibTarnCmData& data = *document.getLibTarnCmData();
  const std::vector<std::string> objects = crowdingNames("A-", 300);
  for (const std::string& name : objects) {
    data.addLibTarnManagedObject(
        *document.getFactory().createLibTarnManagedObject("A", name.c_str(), nullptr));
  }
  EXPECT_EQ(data.getManagedObjectNumber(), objects.size());
  for (const std::string& name : objects) {
    ASSERT_NE(data.getLibTarnManagedObject(name.c_str()), nullptr) << name;
  }
}

// What a host sees of each element in the tree, indexed or not.
std::string visible(const LibTarnDocument& document) {
  std::string text;
  const IElement* each = document.getLibTarnCmData();
  for (; each; each = each->getNextSiblingElement()) {
    const auto& cmData = dynamic_cast<const LibTarnCmData&>(*each);
    text += cmData.getType().toString() + " " + std::to_string(cmData.getManagedObjectNumber());
    const IElement* child = cmData.getFirstChildElement("managedObject");
    for (; child; child = child->getNextSiblingElement()) {
      const auto& object = dynamic_cast<const LibTarnManagedObject&>(*child);
      const char* const name = object.getDistName().getText();
      text +=
          std::string("\n ") + (name ? name : "(none)") + " " + object.getOperation().toString();
      for (const auto& scalar : object.getScalarParameters())
        text += std::string(" ") + scalar.first;
      for (const auto& list : object.getListParameters())
        text += std::string(" [") + list.first + "]";
      const IElement* list = object.getFirstChildElement("list");
      for (; list; list = list->getNextSiblingElement()) {
        const Structure* item = dynamic_cast<const List&>(*list).getStructuredValues();
        for (; item; item = item->getNextSiblingElement()) {
          text += " {";
          for (const auto& component : item->getComponents()) text += component.first;
          text += "}";
        }
      }
    }
    text += "\n";
  }
  return text;
}

struct Exit {
  const char* name;
  int code;
  std::string content;  // of the root
};

// In gtest's own output.
void PrintTo(const Exit& exit, std::ostream* out) { *out << exit.name; }

const std::string GOOD =
    "<managedObject class='A' distName='A-1' operation='update'><p name='x'/>"
    "<list name='l'><item><p name='c'/></item></list></managedObject>"
    "<managedObject class='A' distName='A-2' operation='create'><p name='x'/></managedObject>";

std::string body(const std::string& objects, const std::string& type = "type='plan'") {
  return "<cmData " + type + ">" + objects + "</cmData>";
}

std::string objectWith(const std::string& content) {
  return "<managedObject class='A' distName='A-3' operation='delete'>" + content +
         "</managedObject>";
}

/// Every failure of a load leaves indexes and operations as if the text had been parsed first and
/// then indexed in document order up to the fault.
class ExitTest : public ::testing::TestWithParam<Exit> {};

TEST_P(ExitTest, NothingIsLeftOfWhatWasIndexedOnTheWay) {
  const std::string text =
      "<tarn xmlns='tarn21.xsd' version='2.1'>" + GetParam().content + "</tarn>";
  for (const bool validate : {false, true}) {
    LibTarnDocument atOnce;
    LibTarnDocument inSteps;
    const Outcome first = loadAtOnce(atOnce, text, validate);
    const Outcome second = loadInSteps(inSteps, text, validate);
    EXPECT_EQ(first.code, GetParam().code);
    EXPECT_EQ(first.message, second.message);
    EXPECT_EQ(visible(atOnce), visible(inSteps));
  }
}

INSTANTIATE_TEST_SUITE_P(
    LoadTest, ExitTest,
    ::testing::Values(
        Exit{"Malformed", 1, body(GOOD) + body(GOOD) + "<"},
        Exit{"MalformedWithinTheBody", 1, body(GOOD) + body(GOOD + "<p", "type='actual'")},
        Exit{"UnknownTag", 1, body(GOOD + "<managedObjects/>")}, Exit{"NoType", 2, body(GOOD, "")},
        Exit{"UnknownType", 2, body(GOOD, "type='wish'")},
        Exit{"NoTypeOfTheSecondBody", 2, body(GOOD) + body(GOOD, "") + body(GOOD)},
        Exit{"ObjectTwice", 2, body(GOOD + GOOD)},
        Exit{"ObjectTwiceInTheSecondBody", 2, body(GOOD) + body(GOOD + GOOD) + body(GOOD)},
        Exit{"ParameterTwice", 2, body(GOOD + objectWith("<p name='y'/><p name='y'/>") + GOOD)},
        Exit{"ListTwice", 2, body(GOOD + objectWith("<list name='y'/><list name='y'/>") + GOOD)},
        Exit{"ComponentTwice", 2,
             body(GOOD +
                  objectWith("<p name='z'/><list name='y'><item><p name='a'/></item><item>"
                             "<p name='b'/><p name='b'/></item></list>") +
                  GOOD)},
        Exit{"UnknownOperation", 2,
             body(GOOD + "<managedObject class='A' distName='A-4' operation='no'/>" + GOOD)},
        Exit{"NulAfterWhatIsIndexed", 2,
             body(GOOD) + body(GOOD + objectWith("<p name='y&#0;1'/><p name='y&#0;2'/>") + GOOD)}),
    [](const auto& exit) { return std::string(exit.param.name); });

// Memory that runs out during the load, at each of its allocations.
TEST(LoadTest, NothingIsLeftOfWhatWasIndexedWhenMemoryEnded) {
  const std::string text = "<tarn>" + body(GOOD) + body(GOOD) + "</tarn>";
  std::size_t faults = 0;
  for (bool done = false; !done; ++faults) {
    LibTarnDocument document(OutOfMemory::Throw);
    std::vector<char> copy(text.c_str(), text.c_str() + text.size() + 1);
    try {
      const tarn_test::HeapFault fault(faults + 1);
      document.parse(std::move(copy), false);
      done = true;
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(visible(document).find_first_of("x["), std::string::npos) << visible(document);
    }
  }
  EXPECT_GT(faults, 5U);
}

}  // namespace
