// The document, its body, header and history.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/EnumeratedAttribute.hpp"
#include "libtarn/model/IDistinguishedNameValidator.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentDeclaration.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/LogImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"
#include "support/CapturedLog.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"
#include "support/treeDump.hpp"

namespace {

using namespace libtarn::model;
using libtarn::util::TarnFactory;
using tarn_test::CapturedLog;
using tarn_test::namesOf;
using tarn_test::printed;
using tarn_test::rootText;

using Names = std::vector<std::string>;

void expectLine(const CapturedLog::Line& line, const char* level, const char* function,
                const std::string& message) {
  EXPECT_EQ(line.level, level);
  EXPECT_EQ(line.function, function);
  EXPECT_EQ(line.message, message);
  EXPECT_EQ(line.location.rfind("src/libTARN/", 0), 0U) << line.location;
  EXPECT_NE(line.location.find(".cpp:"), std::string::npos) << line.location;
}

class DocumentTest : public ::testing::Test {
 protected:
  void parse(const std::string& body) {
    ASSERT_EQ(document_.parse(("<tarn>" + body + "</tarn>").c_str(), false), 0);
    cmData_ = dynamic_cast<LibTarnCmDataImp*>(document_.getLibTarnCmData());
    log_.clear();
  }
  // With the attributes that validation demands of the root.
  void parseValid(const std::string& body) {
    ASSERT_EQ(document_.parse(rootText(body).c_str(), true), 0);
    cmData_ = dynamic_cast<LibTarnCmDataImp*>(document_.getLibTarnCmData());
    log_.clear();
  }
  TarnFactory& factory() { return document_.getFactory(); }
  LibTarnManagedObject& object(const char* distName, const char* className = "C") {
    return *factory().createLibTarnManagedObject(className, distName, nullptr);
  }
  std::string tree() { return tarn_test::dump(*cmData_); }

  CapturedLog log_;
  LibTarnDocument document_;
  LibTarnCmDataImp* cmData_ = nullptr;
};

TEST_F(DocumentTest, FreshDocumentPrintsDeclarationAndEmptyRoot) {
  EXPECT_EQ(printed(document_),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<tarn xmlns=\"tarn21.xsd\" version=\"2.1\"></tarn>\n");
  EXPECT_EQ(document_.getLibTarnCmData(), nullptr);
  EXPECT_STREQ(document_.getVersion(), "2.1");
  EXPECT_STREQ(document_.getXmlns(), "tarn21.xsd");
}

TEST_F(DocumentTest, TextsOwnSchemaAndVersionAreKept) {
  EXPECT_EQ(document_.parse("<?xml version='1.1'?><tarn xmlns='other' version='9'/>", false), 0);
  EXPECT_STREQ(document_.getXmlns(), "other");
  EXPECT_STREQ(document_.getVersion(), "9");
  const auto* const declaration = dynamic_cast<LibTarnDocumentDeclaration*>(
      document_.getItsTarnDomDocument()->getDocumentDeclaration());
  EXPECT_STREQ(declaration->getVersion(), "1.1");
  EXPECT_EQ(declaration->getEncoding(), nullptr);
}

TEST_F(DocumentTest, ParsingLogsItsSteps) {
  EXPECT_EQ(document_.parse("<tarn xmlns='bad'/>", false), 0);
  ASSERT_EQ(log_.lines().size(), 3U);
  expectLine(log_.lines()[0], "DEBUG", "parse", "Parsing done");
  expectLine(log_.lines()[1], "DEBUG", "rebuildIndexersAndInitializeEnums",
             "Rebuilding indexers and initializing enums done.");
  expectLine(log_.lines()[2], "INFO", "parseImpl",
             "LibTarnDocument parsing done. Document parsing, building indexers");
  log_.clear();
  EXPECT_EQ(document_.parse("<tarn xmlns='tarn21.xsd' version=''><cmData type='actual'><header/>"
                            "</cmData></tarn>",
                            true),
            0);
  expectLine(log_.lines().back(), "INFO", "parseImpl",
             "LibTarnDocument parsing done. Document parsing, building indexers, validation "
             "successful");
  log_.clear();
  EXPECT_EQ(document_.parse("<foo/>", false), 1);
  expectLine(log_.lines().back(), "ERROR", "parseImpl", "Parsing failed: unknown TARN object");
  log_.clear();
  EXPECT_EQ(document_.parse("<tarn xmlns='bad' version=''/>", true), 2);
  expectLine(log_.lines().back(), "ERROR", "parseImpl",
             "Validation failed: 'bad' is not a valid value of 'tarn > ' attribute 'xmlns'");
}

TEST_F(DocumentTest, ThrowingLogCallbackChangesNothing) {
  log_.throwFromPrint();
  EXPECT_EQ(document_.parse("<tarn/>", false), 0);
  EXPECT_EQ(document_.parse("<", false), 1);
  EXPECT_NE(factory().createLog("a", nullptr, nullptr)->getDateTime(), nullptr);
}

TEST_F(DocumentTest, DuplicateNameBreaksARuleWithoutValidationToo) {
  EXPECT_EQ(document_.parse("<tarn><cmData type='plan'><managedObject distName='B-1'/>"
                            "<managedObject distName='A-1'/><managedObject distName='B-1'/>"
                            "<managedObject distName='C-1'/></cmData></tarn>",
                            false),
            2);
  EXPECT_EQ(log_.messages("ERROR"),
            Names{"Validation failed: The 'cmData' element already contains a 'managedObject' "
                  "element with 'distName=B-1'"});
  // Objects before it are indexed.
  EXPECT_EQ(namesOf(document_.getLibTarnCmData()->getLibTarnManagedObjects()),
            (Names{"A-1", "B-1"}));
}

TEST_F(DocumentTest, MaskSelectsInTheOrderOfNamesAndChangesAreLogged) {
  parse(
      "<cmData type='plan'><managedObject class='C' distName='A-1/B-2'/>"
      "<managedObject class='D' distName='A-1/B-3'/>"
      "<managedObject class='C' distName='A-1/B-10'/></cmData>");
  LibTarnManagedObject& mask = object("A-1", "C");
  mask.setVersion("#");
  Names matching;
  for (const auto* found : document_.getMOsMatchingMask(mask)) {
    matching.emplace_back(found->getDistName().getText());
  }
  EXPECT_EQ(matching, (Names{"A-1/B-10", "A-1/B-2"}));

  LibTarnManagedObject& changes = object("A-2", "#");
  changes.setVersion("5");
  document_.setChangesToMOs(mask, changes);
  EXPECT_EQ(log_.messages("INFO"),
            (Names{"LibTarnCmData retrivied.", "MO with DN: A-1/B-10 match the mask.",
                   "MO with DN: A-1/B-2 match the mask.",
                   "MO with DN: A-1/B-3 doesn't match the mask."}));
  expectLine(log_.lines().back(), "INFO", "setChangesToMOs",
             "MO with DN: A-1/B-3 doesn't match the mask.");
  EXPECT_EQ(namesOf(cmData_->getLibTarnManagedObjects()),
            (Names{"A-1/B-3", "A-2/B-10", "A-2/B-2"}));
}

TEST_F(DocumentTest, WithoutCmDataMasksSelectNothingAndNothingIsLogged) {
  EXPECT_TRUE(document_.getMOsMatchingMask(object("A-1")).empty());
  document_.setChangesToMOs(object("A-1"), object("A-2"));
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(DocumentTest, RootAndDeclarationRefuseToBeCopied) {
  auto* const root = document_.getItsTarnDomDocument()->getRootElement();
  auto* const declaration = dynamic_cast<LibTarnDocumentDeclaration*>(
      document_.getItsTarnDomDocument()->getDocumentDeclaration());
  const auto message = [](const auto& copy) -> std::string {
    try {
      copy();
    } catch (const exceptions::ModelException& error) {
      return error.what();
    }
    return "copied";
  };
  libDomXml::IMemoryPool* const pool = document_.getItsTarnDomDocument();
  libDomXml::IDomDocument* const dom = document_.getItsTarnDomDocument();
  EXPECT_EQ(message([&] { root->clone(pool); }),
            "Cannot clone TARN document to other memory pool.");
  EXPECT_EQ(message([&] { declaration->clone(); }), "Document declaration cannot be cloned.");
  EXPECT_EQ(message([&] { declaration->clone(dom); }), "Document declaration cannot be cloned.");
  EXPECT_EQ(root->clone(factory()), nullptr);
  EXPECT_EQ(declaration->clone(factory()), nullptr);
  ASSERT_EQ(log_.lines().size(), 2U);
  expectLine(log_.lines()[0], "ERROR", "clone",
             "LibTarnDocumentInternal::clone(util::TarnFactory& factory) shouldn't be called!");
  expectLine(log_.lines()[1], "ERROR", "clone",
             "LibTarnDocumentDeclaration::clone(util::TarnFactory& factory) shouldn't be called!");
  EXPECT_STREQ(root->clone()->getTagName(), "tarn");
  root->removeThisElement();
  EXPECT_EQ(root->getNextSiblingElement(), nullptr);
}

TEST_F(DocumentTest, OwnPartsOfAHostAreUsed) {
  struct OnlyX : IDistinguishedNameValidator {
    bool isValid(const char* distName) const override {
      return distName && std::string(distName) == "X";
    }
  };
  OnlyX validator;
  TarnDomDocument pool;
  const auto indexFactory = std::make_unique<indexation::TarnIndexFactory>(pool);
  LibTarnDocument document(new TarnDomDocument(&validator, indexFactory.get()));
  EXPECT_EQ(document.getFactory().createLibTarnManagedObject("C", "A-1", nullptr), nullptr);
  EXPECT_NE(document.getFactory().createLibTarnManagedObject("C", "X", nullptr), nullptr);
  EXPECT_EQ(document.parse("<tarn xmlns='tarn21.xsd' version=''><cmData type='plan'><header/>"
                           "<managedObject class='' distName='A-1'/></cmData></tarn>",
                           true),
            2);
  EXPECT_EQ(log_.messages("ERROR"), Names{"Validation failed: Invalid distinguished name: 'A-1'"});
}

TEST_F(DocumentTest, DocumentMakesThePartsThatAHostDoesNotPass) {
  LibTarnDocument document(new TarnDomDocument(nullptr, nullptr));
  EXPECT_EQ(document.getFactory().createLibTarnManagedObject("C", "no name", nullptr), nullptr);
  EXPECT_EQ(document.parse("<tarn xmlns='tarn21.xsd' version=''><cmData type='plan'><header/>"
                           "<managedObject class='C' distName='A-1'><p name='x'>1</p>"
                           "</managedObject></cmData></tarn>",
                           true),
            0);
  const LibTarnManagedObject* const object =
      document.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  ASSERT_NE(object, nullptr);
  EXPECT_STREQ(object->getScalarParameter("x")->getValue(), "1");
}

// cmData

std::unique_ptr<char[]> arrayOf(const std::string& text) {
  std::unique_ptr<char[]> array(new char[text.size() + 1]);
  std::copy_n(text.c_str(), text.size() + 1, array.get());
  return array;
}

TEST(TextOfDocumentTest, VectorGoesWhenAnArrayTakesItsPlace) {
  const std::string text = rootText("<cmData type=\"plan\"/>" + std::string(1 << 20, ' '));
  LibTarnDocument document;
  TarnDomDocument& dom = *document.getItsTarnDomDocument();
  std::vector<char> vector(text.c_str(), text.c_str() + text.size() + 1);
  dom.parse(vector);
  const std::size_t withVector = dom.getMemorySize();
  ASSERT_EQ(dom.parse(arrayOf(text)), 0);
  EXPECT_LT(dom.getMemorySize(), withVector / 2);
}

TEST(TextOfDocumentTest, ParseOfAVectorHandsBackTheEarlierVectorButNoArray) {
  const std::string first = rootText("<cmData type=\"plan\"/>");
  const std::string second = rootText("<cmData type=\"actual\"/>");
  LibTarnDocument document;
  TarnDomDocument& dom = *document.getItsTarnDomDocument();
  std::vector<char> vector(first.c_str(), first.c_str() + first.size() + 1);
  dom.parse(vector);
  EXPECT_TRUE(vector.empty());
  vector.assign(second.c_str(), second.c_str() + second.size() + 1);
  const char* const characters = vector.data();
  dom.parse(vector);
  EXPECT_EQ(vector.size(), first.size() + 1);
  dom.keepText();
  ASSERT_EQ(dom.parse(arrayOf(first)), 0);
  vector.assign(second.c_str(), second.c_str() + second.size() + 1);
  dom.parse(vector);
  EXPECT_TRUE(vector.empty());
  EXPECT_STREQ(characters + second.size(), "") << "a kept text stays where it was";
}

TEST_F(DocumentTest, TypeIsReadAtRebuildAndKeptInStep) {
  auto* const fresh = dynamic_cast<LibTarnCmDataImp*>(factory().allocateTarnCmDataNode());
  fresh->setAttribute("type", "plan");
  EXPECT_TRUE(fresh->getType() == LibTarnCmData::Type::DEFAULTS);
  fresh->rebuildIndexersAndInitializeEnums();
  EXPECT_TRUE(fresh->getType() == LibTarnCmData::Type::PLAN);
  EXPECT_EQ(fresh->getManagedObjectNumber(), 0U);
  fresh->setType(LibTarnCmData::Type::ACTUAL);
  EXPECT_STREQ(fresh->getAttribute("type"), "actual");
  EXPECT_TRUE(fresh->getType() == LibTarnCmData::Type::ACTUAL);
  EXPECT_EQ(fresh->getId(), nullptr);
  fresh->setAttribute("id", "7");
  EXPECT_STREQ(fresh->getId(), "7");
}

TEST_F(DocumentTest, MissingOrUnknownTypeBreaksARule) {
  EXPECT_EQ(document_.parse("<tarn><cmData/></tarn>", false), 2);
  EXPECT_EQ(document_.parse("<tarn><cmData type='Plan'/></tarn>", false), 2);
  EXPECT_EQ(document_.parse("<tarn><cmData type=''/></tarn>", false), 2);
  EXPECT_EQ(log_.messages("ERROR"),
            (Names{"Validation failed: The 'cmData' element has no attribute 'type'",
                   "Validation failed: 'Plan' is not a valid value of 'cmData' attribute 'type'",
                   "Validation failed: '' is not a valid value of 'cmData' attribute 'type'"}));
}

TEST_F(DocumentTest, ObjectsAreAddedFoundAndRemoved) {
  parse("<cmData type='plan'/>");
  LibTarnManagedObject& added = object("B-1");
  cmData_->addLibTarnManagedObject(added);
  cmData_->addLibTarnManagedObject(object("A-1", "D"));
  EXPECT_EQ(tree(),
            "cmData(type=plan){managedObject(class=C distName=B-1) "
            "managedObject(class=D distName=A-1)}");
  cmData_->addLibTarnManagedObject(object("B-1", "E"));
  EXPECT_EQ(cmData_->getManagedObjectNumber(), 2U);
  EXPECT_TRUE(cmData_->hasLibTarnManagedObject("B-1"));
  EXPECT_EQ(cmData_->getLibTarnManagedObject("B-1"), &added);
  EXPECT_EQ(namesOf(cmData_->getLibTarnManagedObjectsByClass("D")), Names{"A-1"});
  EXPECT_TRUE(cmData_->getLibTarnManagedObjectsByClass("E").empty());
  EXPECT_EQ(cmData_->removeLibTarnManagedObject("C-1"), 2);
  EXPECT_EQ(cmData_->removeLibTarnManagedObject("B-1"), 0);
  EXPECT_FALSE(cmData_->hasLibTarnManagedObject("B-1"));
  EXPECT_EQ(tree(), "cmData(type=plan){managedObject(class=D distName=A-1)}");
  cmData_->getLibTarnManagedObject("A-1")->removeThisElement();
  EXPECT_TRUE(cmData_->hasLibTarnManagedObject("A-1"));
  EXPECT_EQ(cmData_->removeLibTarnManagedObject("A-1"), 1);
  EXPECT_EQ(cmData_->removeLibTarnManagedObject("A-1"), 2);
}

TEST_F(DocumentTest, RemoveAllKeepsTheHeader) {
  parse(
      "<cmData type='plan'><managedObject distName='B-1'/><header/>"
      "<managedObject distName='A-1'/></cmData>");
  cmData_->removeAllLibTarnManagedObjects();
  EXPECT_EQ(tree(), "cmData(type=plan){header}");
  EXPECT_EQ(cmData_->getManagedObjectNumber(), 0U);
}

TEST_F(DocumentTest, NewHeaderReplacesTheFirstAndComesLast) {
  parse(
      "<cmData type='plan'><header a='1'/><managedObject distName='A-1'/><header a='2'/>"
      "</cmData>");
  LibTarnHeader& header = *factory().createLibTarnHeader();
  cmData_->setLibTarnHeader(header);
  EXPECT_EQ(tree(), "cmData(type=plan){managedObject(distName=A-1) header(a=2) header}");
  cmData_->setLibTarnHeader(header);
  EXPECT_EQ(tree(), "cmData(type=plan){managedObject(distName=A-1) header}");
  cmData_->setLibTarnHeader(header);
  EXPECT_EQ(tree(), "cmData(type=plan){managedObject(distName=A-1) header}");
  EXPECT_EQ(cmData_->getLibTarnHeader(), &header);
}

TEST_F(DocumentTest, RenamingUpdatesTheIndex) {
  parse(
      "<cmData type='plan'><managedObject distName='A-1'/><managedObject distName='B-1'/>"
      "</cmData>");
  LibTarnManagedObject* const renamed = cmData_->getLibTarnManagedObject("A-1");
  EXPECT_EQ(renamed->setDistName("C-1"), 0);
  EXPECT_EQ(cmData_->getLibTarnManagedObject("C-1"), renamed);
  EXPECT_EQ(renamed->setDistName("no name"), 1);
  EXPECT_EQ(renamed->setDistName(nullptr), 1);
  EXPECT_EQ(renamed->setDistName(renamed->getDistName().getText()), 0);
  EXPECT_EQ(namesOf(cmData_->getLibTarnManagedObjects()), (Names{"B-1", "C-1"}));
  EXPECT_TRUE(log_.lines().empty());
  EXPECT_EQ(renamed->setDistName("B-1"), 0);
  ASSERT_EQ(log_.lines().size(), 1U);
  expectLine(log_.lines()[0], "ERROR", "setMoDistName",
             "Adding object to index failed, that shouldn't happen");
  EXPECT_STREQ(renamed->getDistName().getText(), "B-1");
  EXPECT_EQ(namesOf(cmData_->getLibTarnManagedObjects()), (Names{"B-1"}));
  EXPECT_NE(cmData_->getLibTarnManagedObject("B-1"), renamed);
  log_.clear();
  dynamic_cast<TarnDomElement*>(renamed)->setAttribute("distName", "D-1");
  EXPECT_EQ(renamed->setDistName("E-1"), 0);
  ASSERT_EQ(log_.lines().size(), 1U);
  expectLine(log_.lines()[0], "ERROR", "setMoDistName",
             "There was no such object in the index, that shouldn't happen");
  EXPECT_EQ(cmData_->getLibTarnManagedObject("E-1"), renamed);
}

TEST_F(DocumentTest, ObjectThatTookANameIsFoundOnceTheNameIsFree) {
  const auto parseThree = [this] {
    parseValid(
        "<cmData type='actual'><header/><managedObject distName='A-1' class='C'/>"
        "<managedObject distName='B-1' class='C'/><managedObject distName='C-1' class='C'/>"
        "</cmData>");
    return cmData_->getLibTarnManagedObject("A-1");
  };
  const auto free = [this](int way) {
    LibTarnManagedObject* const holder = cmData_->getLibTarnManagedObject("B-1");
    if (way == 0) {
      cmData_->removeLibTarnManagedObject("B-1");
    } else {
      holder->setDistName("D-1");
    }
    return holder;
  };
  for (const int way : {0, 1}) {
    LibTarnManagedObject* const taker = parseThree();
    EXPECT_EQ(taker->setDistName("B-1"), 0);
    EXPECT_NE(cmData_->getLibTarnManagedObject("B-1"), taker);
    EXPECT_NE(free(way), taker);
    EXPECT_EQ(cmData_->getLibTarnManagedObject("B-1"), taker);
    EXPECT_EQ(tarn_test::brokenDocument(document_), "");
    // A delta cannot add a second one.
    LibTarnDocument delta;
    ASSERT_EQ(delta.parse("<tarn><cmData type='plan'><managedObject distName='B-1' class='C' "
                          "operation='create'/></cmData></tarn>",
                          false),
              0);
    EXPECT_FALSE(libtarn::editor::TarnMerge(document_).mergeDocument(delta));
    EXPECT_EQ(document_.validate(), 0);
  }
}

TEST_F(DocumentTest, RenamingAnObjectThatTookANameLeavesTheOtherOneInTheIndex) {
  parseValid(
      "<cmData type='actual'><header/><managedObject distName='A-1' class='C'/>"
      "<managedObject distName='B-1' class='C'/></cmData>");
  LibTarnManagedObject* const taker = cmData_->getLibTarnManagedObject("A-1");
  LibTarnManagedObject* const holder = cmData_->getLibTarnManagedObject("B-1");
  EXPECT_EQ(document_.validate(), 0);
  EXPECT_EQ(taker->setDistName("B-1"), 0);
  EXPECT_EQ(document_.validate(), 2);
  EXPECT_EQ(document_.getDiagnostic().message,
            "The 'cmData' element already contains a 'managedObject' element with 'distName=B-1'");
  // Its class is no key of the index either.
  auto& values = libtarn::util::ManagedObjectBuilder(document_).setClass("D").get();
  EXPECT_TRUE(taker->change(*taker, values));
  EXPECT_EQ(taker->setDistName("B-1"), 0);
  EXPECT_EQ(cmData_->getLibTarnManagedObject("B-1"), holder);
  EXPECT_EQ(taker->setDistName("C-1"), 0);
  EXPECT_EQ(cmData_->getLibTarnManagedObject("B-1"), holder);
  EXPECT_EQ(cmData_->getLibTarnManagedObject("C-1"), taker);
  EXPECT_EQ(document_.validate(), 0);
  EXPECT_EQ(tarn_test::brokenDocument(document_), "");
  EXPECT_EQ(taker->setDistName("B-1"), 0);
  dynamic_cast<LibTarnCmDataImp&>(*cmData_).removeAllLibTarnManagedObjects();
  EXPECT_EQ(taker->getNextSiblingElement(), nullptr);
  EXPECT_EQ(cmData_->getFirstChildElement("managedObject"), nullptr);
}

TEST_F(DocumentTest, ObjectsThatTookOneNameGetItInTheOrderInWhichTheyTookIt) {
  constexpr int TAKERS = 200;
  std::string text = "<cmData type='actual'><header/><managedObject distName='B-1' class='C'/>";
  for (int i = 0; i < TAKERS; ++i) {
    text += "<managedObject distName='A-" + std::to_string(i) + "' class='C'/>";
  }
  parseValid(text + "</cmData>");
  std::vector<LibTarnManagedObject*> takers;
  for (int i = 0; i < TAKERS; ++i) {
    takers.push_back(cmData_->getLibTarnManagedObject(("A-" + std::to_string(i)).c_str()));
    EXPECT_EQ(takers.back()->setDistName("B-1"), 0);
  }
  EXPECT_EQ(cmData_->getManagedObjectNumber(), 1U);
  // An object that got another name no longer claims this one.
  EXPECT_EQ(takers[7]->setDistName("D-1"), 0);
  takers.erase(takers.begin() + 7);
  for (LibTarnManagedObject* const taker : takers) {
    EXPECT_EQ(document_.validate(), 2);
    EXPECT_EQ(cmData_->removeLibTarnManagedObject("B-1"), 0);
    EXPECT_EQ(cmData_->getLibTarnManagedObject("B-1"), taker);
  }
  EXPECT_EQ(document_.validate(), 0);
  EXPECT_EQ(tarn_test::brokenDocument(document_), "");
}

TEST_F(DocumentTest, NameThatOnlyOneChildHasIsNoDuplicate) {
  parseValid(
      "<cmData type='actual'><header/><managedObject distName='A-1' class='C'/>"
      "<managedObject distName='B-1' class='C'/></cmData>");
  LibTarnManagedObject* const holder = cmData_->getLibTarnManagedObject("B-1");
  EXPECT_EQ(cmData_->getLibTarnManagedObject("A-1")->setDistName("B-1"), 0);
  EXPECT_EQ(document_.validate(), 2);
  // The index is not updated.
  holder->removeThisElement();
  EXPECT_EQ(document_.validate(), 0);
  // Two objects that are not in the index count as two.
  LibTarnManagedObject& added = object("C-1");
  cmData_->addLibTarnManagedObject(added);
  EXPECT_EQ(added.setDistName("B-1"), 0);
  EXPECT_EQ(document_.validate(), 2);
}

TEST_F(DocumentTest, NameOfAnObjectElsewhereIsJustSet) {
  parse("<cmData type='plan'><extension><managedObject distName='A-1'/></extension></cmData>");
  LibTarnManagedObject& detached = object("A-1");
  EXPECT_EQ(detached.setDistName("B-1"), 0);
  auto* const extension = cmData_->getFirstChildElement("extension");
  auto* const nested =
      dynamic_cast<LibTarnManagedObject*>(extension->getFirstChildElement("managedObject"));
  EXPECT_EQ(nested->setDistName("B-2"), 0);
  EXPECT_STREQ(nested->getDistName().getText(), "B-2");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(DocumentTest, CopiedCmDataIsIndexedByItsRebuild) {
  parse(
      "<cmData type='plan' id='1'><header><log action='a'>t</log></header>"
      "<managedObject distName='A-1'><p name='x'>1</p><list name='l'><item><p name='y'/></item>"
      "</list></managedObject></cmData>");
  LibTarnDocument other;
  for (TarnFactory* const target : {&factory(), &other.getFactory()}) {
    LibTarnCmDataImp* const copy = cmData_->clone(*target);
    EXPECT_EQ(tarn_test::dump(*copy), tree());
    EXPECT_EQ(copy->getDomFactory()->getMemoryPool(), &target->getMemoryPool());
    EXPECT_EQ(copy->getManagedObjectNumber(), 0U);
    EXPECT_TRUE(copy->getType() == LibTarnCmData::Type::DEFAULTS);
    copy->rebuildIndexersAndInitializeEnums();
    copy->rebuildIndexersAndInitializeEnums();
    EXPECT_EQ(namesOf(copy->getLibTarnManagedObjects()), Names{"A-1"});
    EXPECT_TRUE(copy->getType() == LibTarnCmData::Type::PLAN);
  }
  EXPECT_EQ(tarn_test::dump(*cmData_->clone()), tree());
  libDomXml::IDomDocument* const dom = document_.getItsTarnDomDocument();
  EXPECT_EQ(cmData_->clone(dom), nullptr);
  expectLine(log_.lines().at(0), "ERROR", "clone",
             "LibTarnCmDataImp::clone(IDomDocument* document) shouldn't be called!");
}

TEST_F(DocumentTest, NameThatContinuesAfterATagIsUnknown) {
  for (const char* const tag :
       {"tarn", "cmData", "header", "log", "managedObject", "p", "list", "item", "extension"}) {
    const std::string name = std::string(tag) + "X";
    EXPECT_EQ(document_.parse(("<" + name + "/>").c_str(), false), 1) << name;
    EXPECT_EQ(document_.getDiagnostic().message, "unknown TARN object");
  }
}

TEST_F(DocumentTest, EveryElementGivesItsFirstChildOfATag) {
  parse(
      "<cmData type='plan'><header><log/><log/></header><managedObject distName='A-1'>"
      "<list name='l'><item><p name='a'/></item></list><extension name='e'><p "
      "name='b'/></extension>"
      "<p name='c'/></managedObject></cmData>");
  const auto tagOf = [](IElement* element) {
    return element ? dynamic_cast<TarnDomElement&>(*element).getTagName() : "none";
  };
  LibTarnHeader& header = *cmData_->getLibTarnHeader();
  LibTarnManagedObject& object = *cmData_->getLibTarnManagedObject("A-1");
  List& list = *object.getListParameter("l");
  Structure& item = *list.getStructuredValues();
  EXPECT_STREQ(tagOf(cmData_->getFirstChildElement(nullptr)), "header");
  EXPECT_STREQ(tagOf(header.getFirstChildElement("log")), "log");
  EXPECT_STREQ(tagOf(header.getFirstChildElement("p")), "none");
  EXPECT_STREQ(tagOf(header.getLogs()->getFirstChildElement(nullptr)), "none");
  EXPECT_STREQ(tagOf(object.getFirstChildElement(nullptr)), "list");
  EXPECT_STREQ(tagOf(object.getFirstChildElement("p")), "p");
  EXPECT_STREQ(tagOf(list.getFirstChildElement("item")), "item");
  EXPECT_STREQ(tagOf(list.getFirstChildElement("p")), "none");
  EXPECT_STREQ(tagOf(item.getFirstChildElement("p")), "p");
  EXPECT_STREQ(tagOf(object.getExtensions()->getFirstChildElement("p")), "p");
  EXPECT_STREQ(tagOf(object.getExtensions()->getFirstChildElement("item")), "none");
  EXPECT_STREQ(tagOf(item.getComponent("a")->getFirstChildElement(nullptr)), "none");
}

TEST_F(DocumentTest, PartsOfAnObjectAreCopiedAndRemovedByThemselves) {
  parse(
      "<cmData type='plan'><managedObject distName='A-1'><list name='l'><item><p name='a'/></item>"
      "<item><p name='b'/></item></list><list name='m'/><extension name='e'><p name='c'/>"
      "</extension></managedObject></cmData>");
  LibTarnManagedObject& object = *cmData_->getLibTarnManagedObject("A-1");
  auto& list = dynamic_cast<ListImp&>(*object.getListParameter("l"));
  auto& item = dynamic_cast<StructureImp&>(*list.getStructuredValues());
  const auto& extension = dynamic_cast<LibTarnExtensionImp&>(*object.getExtensions());
  EXPECT_EQ(tarn_test::dump(*item.clone()), "item{p(name=a)}");
  EXPECT_EQ(tarn_test::dump(*item.clone(factory())), "item{p(name=a)}");
  EXPECT_EQ(tarn_test::dump(*extension.clone()), "extension(name=e){p(name=c)}");
  EXPECT_EQ(item.nextSibling("item"), dynamic_cast<TarnDomElement*>(item.getNextSiblingElement()));
  EXPECT_EQ(item.nextSibling("p"), nullptr);
  item.removeThisElement();
  EXPECT_EQ(tarn_test::dump(list), "list(name=l){item{p(name=b)}}");
  EXPECT_STREQ(list.nextSibling(nullptr)->getAttribute("name"), "m");
  list.removeThisElement();
  EXPECT_EQ(tarn_test::dump(dynamic_cast<LibTarnManagedObjectImp&>(object)),
            "managedObject(distName=A-1){list(name=m) extension(name=e){p(name=c)}}");
}

// A host may put typed elements below an untyped one.
TEST_F(DocumentTest, CopyOfAnUntypedElementHasCopiesOfItsElementsOfTheModel) {
  auto* const untyped = dynamic_cast<libDomXml::DomElement*>(
      document_.getItsTarnDomDocument()->createDomElement("box", nullptr));
  untyped->addChild(dynamic_cast<TarnDomElement*>(factory().createScalar("x", "1")));
  const auto* const copy = dynamic_cast<libDomXml::DomElement*>(untyped->clone());
  EXPECT_EQ(tarn_test::dump(*copy), "box{p(name=x)\"1\"}");
  EXPECT_NE(dynamic_cast<ScalarImp*>(copy->getFirstChild("p")), nullptr);
}

TEST_F(DocumentTest, ElementIsNoPartOfWhatIsInIt) {
  parse("<cmData type='plan'/>");
  List& list = *factory().createList("l");
  Structure& item = *factory().createStructure();
  dynamic_cast<StructureImp&>(item).addChild(&dynamic_cast<ListImp&>(list));
  EXPECT_DEATH(list.addValue(item), "assertion failed: child is no ancestor");
  auto& container = dynamic_cast<LibTarnManagedObjectImp&>(object("A-1"));
  auto& inner = *factory().createLibTarnCmData(LibTarnCmData::Type::PLAN);
  container.addChild(&dynamic_cast<LibTarnCmDataImp&>(inner));
  EXPECT_DEATH(inner.addLibTarnManagedObject(container), "assertion failed: child is no ancestor");
}

TEST_F(DocumentTest, CmDataThatIsRemovedIsNoPartOfTheDocument) {
  parse("<cmData type='plan'/><cmData type='actual'/>");
  LibTarnCmData* const second = dynamic_cast<LibTarnCmData*>(cmData_->getNextSiblingElement());
  cmData_->removeThisElement();
  EXPECT_EQ(document_.getLibTarnCmData(), second);
  cmData_->removeThisElement();
  second->removeThisElement();
  EXPECT_EQ(document_.getLibTarnCmData(), nullptr);
}

// header and log

std::string logsOf(int count) {
  std::string text = "<cmData type='plan'><header>";
  for (int i = 0; i < count; ++i) text += "<log action='" + std::to_string(i) + "'/>";
  return text + "</header></cmData>";
}

std::vector<int> actionsOf(const LibTarnHeader& header) {
  std::vector<int> actions;
  for (const Log* log = header.getLogs(); log; log = log->getNextSiblingElement()) {
    actions.push_back(std::stoi(log->getAction()));
  }
  return actions;
}

TEST_F(DocumentTest, FiftyFirstLogDropsTheOldest) {
  parse(logsOf(50));
  LibTarnHeader& header = *cmData_->getLibTarnHeader();
  header.addLog(*factory().createLog("50", nullptr, nullptr));
  const std::vector<int> actions = actionsOf(header);
  EXPECT_EQ(LibTarnHeader::MAX_LOG_COUNT, 50U);
  EXPECT_EQ(actions.size(), 50U);
  EXPECT_EQ(actions.front(), 1);
  EXPECT_EQ(actions.back(), 50);
}

TEST_F(DocumentTest, ParsedLogsAreKeptUntilTheNextOneComes) {
  parse(logsOf(60));
  LibTarnHeader& header = *cmData_->getLibTarnHeader();
  EXPECT_EQ(actionsOf(header).size(), 60U);
  header.addLog(*factory().createLog("60", nullptr, nullptr));
  EXPECT_EQ(actionsOf(header).size(), 50U);
  EXPECT_EQ(actionsOf(header).front(), 11);
}

TEST_F(DocumentTest, NewLogHasItsTimeAndLeavesATrace) {
  const Log& log = *factory().createLog("merge", "app", "text");
  EXPECT_EQ(
      tarn_test::dump(dynamic_cast<const LogImp&>(log)),
      std::string("log(dateTime=") + log.getDateTime() + " action=merge appInfo=app)\"text\"");
  ASSERT_EQ(log_.lines().size(), 1U);
  EXPECT_EQ(log_.lines()[0].level, "ERROR");
  EXPECT_EQ(log_.lines()[0].function, "updateDateTime");
  EXPECT_EQ(log_.lines()[0].location, "src/libTARN/model/LogImp.cpp:72");
  EXPECT_EQ(log_.lines()[0].message.substr(0, 17), "CHANGED datetime!");
  EXPECT_EQ(log_.lines()[0].message.size(), 17 + std::string(log.getDateTime()).size());
}

TEST_F(DocumentTest, TimesAreLocalInTheFormatOfTheHeader) {
  EXPECT_STREQ(Log::DATETIME_FORMAT, "%a %b %d %H:%M:%S %z %Y");
  setenv("TZ", "UTC", 1);
  tzset();
  EXPECT_EQ(LogImp::formatDateTime(1794764593), "Sun Nov 15 17:43:13 +0000 2026");
  setenv("TZ", "XST-1", 1);
  tzset();
  EXPECT_EQ(LogImp::formatDateTime(1794764593), "Sun Nov 15 18:43:13 +0100 2026");
  unsetenv("TZ");
  tzset();
}

TEST_F(DocumentTest, CopiesOfHeaderAndLog) {
  parse("<cmData type='plan'><header x='1'><log action='a' y='2'>t<p/></log></header></cmData>");
  LibTarnDocument other;
  const auto* const header = dynamic_cast<LibTarnHeaderImp*>(cmData_->getLibTarnHeader());
  EXPECT_EQ(tarn_test::dump(*header->clone(other.getFactory())),
            "header(x=1){log(action=a y=2)\"t\"}");
  EXPECT_EQ(tarn_test::dump(*header->clone()), "header(x=1){log(action=a y=2)\"t\"}");
  const auto* const log = dynamic_cast<LogImp*>(header->getLogs());
  EXPECT_EQ(tarn_test::dump(*log->clone()), "log(action=a y=2)\"t\"");
  libDomXml::IDomDocument* const dom = document_.getItsTarnDomDocument();
  EXPECT_EQ(header->clone(dom), nullptr);
  EXPECT_EQ(log->clone(dom), nullptr);
  ASSERT_EQ(log_.lines().size(), 2U);
  expectLine(log_.lines()[0], "ERROR", "clone",
             "LibTarnHeaderImp::clone(IDomDocument* document) shouldn't be called!");
  expectLine(log_.lines()[1], "ERROR", "clone",
             "LogImp::clone(IDomDocument* document) shouldn't be called!");
}

TEST(EnumeratedAttributeTest, AttributeAndKeptValueChangeTogether) {
  LibTarnDocument document;
  TarnDomElement& element = *document.getFactory().allocateTarnCmDataNode();
  EnumeratedAttribute<LibTarnCmData::Type> attribute(&element, "type");
  EXPECT_FALSE(attribute.hasValue());
  EXPECT_THROW(attribute.initialize(), exceptions::NoSuchAttributeException);
  attribute.set(LibTarnCmData::Type::PLAN);
  EXPECT_STREQ(element.getAttribute("type"), "plan");
  attribute.remove();
  EXPECT_EQ(element.getAttribute("type"), nullptr);
  EXPECT_FALSE(attribute.hasValue());
  EXPECT_THROW(attribute.initialize(), exceptions::NoSuchAttributeException);
  EXPECT_THROW(attribute.toEnum("Plan"), exceptions::InvalidAttributeValueException);
  EXPECT_DEATH(static_cast<void>(attribute.toEnum(nullptr)), "assertion failed: 0 != string");
  EnumeratedAttribute<LibTarnCmData::Type> unbound(nullptr, "type");
  EXPECT_DEATH(unbound.initialize(), "assertion failed: 0 != element");
  EXPECT_DEATH(unbound.remove(), "assertion failed: 0 != element");
}

TEST(LoggerTest, EmptyMessageIsALineAndMissingPartsAreAssertions) {
  using libtarn::util::Logger;
  CapturedLog log;
  { const Logger line(Logger::Level::INFO, "place", "function"); }
  Logger(Logger::Level::DEBUG, "place", "function") << "n=" << 1 << DistinguishedName("A-1");
  ASSERT_EQ(log.lines().size(), 2U);
  EXPECT_EQ(log.lines()[0].message, "");
  EXPECT_EQ(log.lines()[1].message, "n=1A-1");
  EXPECT_DEATH(Logger(Logger::Level::INFO, nullptr, "f"), "assertion failed: 0 != location");
  EXPECT_DEATH(Logger(Logger::Level::INFO, "l", nullptr), "assertion failed: 0 != function");
}

}  // namespace
