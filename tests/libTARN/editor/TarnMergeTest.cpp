#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "libtarn/editor/TarnMerge.hpp"
#include "libtarn/editor/exceptions/EditorException.hpp"
#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "support/CapturedLog.hpp"
#include "support/HeapCount.hpp"
#include "support/HeapDocument.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"
#include "support/treeDump.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::TarnMerge;
using libtarn::editor::exceptions::EditorException;
using tarn_test::brokenDocument;
using tarn_test::CapturedLog;
using tarn_test::documentText;
using tarn_test::HeapDocument;
using tarn_test::loaded;
using tarn_test::objectText;
using Operation = LibTarnManagedObject::Operation;
using Strings = std::vector<std::string>;

std::string dumpOf(const LibTarnDocument& document) {
  return tarn_test::dump(*document.getItsTarnDomDocument());
}

// The managed objects of a dump, without the rest of it.
std::string objectsOf(const LibTarnDocument& document) {
  const std::string all = dumpOf(document);
  const std::size_t begin = all.find("managedObject");
  return begin == std::string::npos ? ""
                                    : all.substr(begin, all.size() - std::strlen("}}}") - begin);
}

LibTarnManagedObject& objectIn(const LibTarnDocument& document, const char* name) {
  LibTarnManagedObject* const found =
      document.getLibTarnCmData()->getLibTarnManagedObject(DistinguishedName(name));
  if (!found) throw std::runtime_error(std::string("no object ") + name);
  return *found;
}

// The source after the merge of a delta that fits. The delta is destroyed before.
std::string merged(const std::string& source, const std::string& delta) {
  const auto document = loaded(source);
  {
    const auto deltaDocument = loaded(delta);
    CapturedLog log;
    EXPECT_TRUE(TarnMerge(*document).mergeDocument(*deltaDocument));
    EXPECT_TRUE(log.lines().empty());
  }
  return objectsOf(*document);
}

std::string mergedObject(const std::string& sourceBody, const std::string& deltaBody) {
  return merged(documentText(objectText("A-1", "", sourceBody)),
                documentText(objectText("A-1", "update", deltaBody)));
}

void expectRefused(const std::string& source, const std::string& delta, const char* function,
                   const char* location, const char* message) {
  const auto document = loaded(source);
  const auto deltaDocument = loaded(delta);
  const std::string before = document->getItsTarnDomDocument()->printDocument();
  const std::string deltaBefore = deltaDocument->getItsTarnDomDocument()->printDocument();
  CapturedLog log;
  EXPECT_FALSE(TarnMerge(*document).mergeDocument(*deltaDocument));
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_EQ(log.lines()[0].level, "ERROR");
  EXPECT_EQ(log.lines()[0].function, function);
  EXPECT_EQ(log.lines()[0].location, location);
  EXPECT_EQ(log.lines()[0].message, message);
  EXPECT_EQ(document->getItsTarnDomDocument()->printDocument(), before);
  EXPECT_EQ(deltaDocument->getItsTarnDomDocument()->printDocument(), deltaBefore);
}

void expectConflict(const std::string& source, const std::string& delta, const char* message) {
  expectRefused(source, delta, "doMerge", "src/libTARN/editor/TarnMerge.cpp:64", message);
}

// Conflicts and missing parts

TEST(TarnMergeTest, SourceOrDeltaWithoutCmDataIsRefused) {
  const std::string good = documentText(objectText("A-1", ""));
  const char* const location = "src/libTARN/editor/TarnMerge.cpp:41";
  const char* const noSource = "Source document doesn't have cmData node";
  expectRefused("<tarn/>", good, "mergeDocument", location, noSource);
  expectRefused("<tarn/>", "<tarn/>", "mergeDocument", location, noSource);
  expectRefused(good, "<tarn/>", "mergeDocument", "src/libTARN/editor/TarnMerge.cpp:49",
                "Delta document doesn't have cmData node");
}

TEST(TarnMergeTest, EachOperationConflictsWithItsCase) {
  const std::string source = documentText(objectText("A-1/B-1", ""));
  expectConflict(source, documentText(objectText("A-1/B-2", "update")),
                 "There is no 'managedObject' element with 'distName=A-1/B-2' to update");
  expectConflict(source, documentText(objectText("A-1/B-1", "create")),
                 "A 'managedObject' element with 'distName=A-1/B-1' already exists");
  expectConflict(source, documentText(objectText("A-1/B-2", "delete")),
                 "There is no 'managedObject' element with 'distName=A-1/B-2' to delete");
}

TEST(TarnMergeTest, DiagnosticHasTheReasonOfTheLastMerge) {
  const auto source = loaded(documentText(objectText("A-1", "")));
  TarnMerge merge(*source);
  EXPECT_EQ(merge.getDiagnostic().code, 0);
  CapturedLog log;
  EXPECT_FALSE(merge.mergeDocument(*loaded(documentText(objectText("A-2", "update")))));
  EXPECT_EQ(merge.getDiagnostic().code, EditResult::Refused);
  EXPECT_EQ(Strings{merge.getDiagnostic().message}, log.messages("ERROR"));
  EXPECT_TRUE(merge.mergeDocument(*loaded(documentText(objectText("A-2", "create")))));
  EXPECT_EQ(merge.getDiagnostic().code, 0);
  EXPECT_EQ(merge.getDiagnostic().message, "");
  EXPECT_FALSE(merge.mergeDocument(*source));
  EXPECT_EQ(merge.getDiagnostic().message, "Source and delta are the same document");
  EXPECT_FALSE(merge.mergeDocument(*std::make_unique<LibTarnDocument>()));
  EXPECT_EQ(merge.getDiagnostic().message, "Delta document doesn't have cmData node");
}

TEST(TarnMergeTest, DiagnosticHasTheConflictOfASingleObject) {
  const auto source = loaded(documentText(objectText("A-1", "")));
  const auto delta =
      loaded(documentText(objectText("A-1", "create") + objectText("A-2", "delete")));
  TarnMerge merge(*source);
  CapturedLog log;
  EXPECT_FALSE(merge.mergeManagedObject(objectIn(*delta, "A-2")));
  EXPECT_EQ(merge.getDiagnostic().code, EditResult::Refused);
  EXPECT_EQ(merge.getDiagnostic().message,
            "There is no 'managedObject' element with 'distName=A-2' to delete");
  EXPECT_FALSE(merge.mergeManagedObject(objectIn(*delta, "A-1")));
  EXPECT_EQ(merge.getDiagnostic().message,
            "A 'managedObject' element with 'distName=A-1' already exists");
  EXPECT_TRUE(log.lines().empty());
}

TEST(TarnMergeTest, NothingIsAppliedBeforeALaterConflictIsFound) {
  const std::string source =
      documentText(objectText("A-1", "", "<p name='x'>1</p>") + objectText("A-3", ""));
  expectConflict(source,
                 documentText(objectText("A-1", "update", "<p name='x'>2</p>") +
                                  objectText("A-2", "create") + objectText("A-3", "create"),
                              "<header><log action='a' dateTime='d'/></header>"),
                 "A 'managedObject' element with 'distName=A-3' already exists");
}

TEST(TarnMergeTest, FirstConflictInTheOrderOfNamesIsReported) {
  expectConflict(documentText(objectText("B-1", "")),
                 documentText(objectText("B-1", "create") + objectText("A-2", "delete")),
                 "There is no 'managedObject' element with 'distName=A-2' to delete");
}

TEST(TarnMergeTest, ConflictOfObjectWithoutNameNamesTheEmptyText) {
  expectConflict(documentText(""), documentText("<managedObject operation='update'/>"),
                 "There is no 'managedObject' element with 'distName=' to update");
  expectConflict(documentText("<managedObject distName=''/>"),
                 documentText("<managedObject operation='create'/>"),
                 "A 'managedObject' element with 'distName=' already exists");
}

TEST(TarnMergeTest, DocumentIsNotMergedIntoItself) {
  for (const char* const operation : {"", "create", "update", "delete", "auto"}) {
    const auto document = loaded(documentText(objectText("A-1", operation),
                                              "<header><log action='a' dateTime='d'/></header>"));
    const std::string before = document->getItsTarnDomDocument()->printDocument();
    CapturedLog log;
    EXPECT_FALSE(TarnMerge(*document).mergeDocument(*document));
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0].level, "ERROR");
    EXPECT_EQ(log.lines()[0].function, "mergeDocument");
    EXPECT_EQ(log.lines()[0].message, "Source and delta are the same document");
    EXPECT_EQ(document->getItsTarnDomDocument()->printDocument(), before);
  }
}

TEST(TarnMergeTest, MissingCmDataOfADocumentMergedIntoItselfIsReported) {
  LibTarnDocument document;
  CapturedLog log;
  EXPECT_FALSE(TarnMerge(document).mergeDocument(document));
  EXPECT_EQ(log.messages("ERROR"), (Strings{"Source document doesn't have cmData node"}));
}

TEST(TarnMergeTest, CmDataAddedAfterConstructionIsNotSeen) {
  LibTarnDocument source;
  TarnMerge merge(source);
  source.addLibTarnCmData(*source.getFactory().createLibTarnCmData(LibTarnCmData::Type::PLAN));
  const auto delta = loaded(documentText(objectText("A-1", "create")));
  CapturedLog log;
  EXPECT_FALSE(merge.mergeDocument(*delta));
  EXPECT_FALSE(merge.mergeManagedObject(objectIn(*delta, "A-1")));
  EXPECT_TRUE(TarnMerge(source).mergeDocument(*delta));
  EXPECT_TRUE(source.getLibTarnCmData()->hasLibTarnManagedObject("A-1"));
}

// Create, delete, auto

TEST(TarnMergeTest, CreatedObjectIsAWholeCopyAtTheEnd) {
  EXPECT_EQ(merged(documentText(objectText("B-1", "")),
                   documentText(
                       objectText("A-1", "create",
                                  "<p name='b'>1</p><list name='l'><p>2</p><p/></list><p name='a'/>"
                                  "<list name='s'><item><p name='q'>3</p></item></list>"
                                  "<extension name='e'><p name='r'>4</p></extension>"))),
            "managedObject(class=C distName=B-1 version=1) "
            "managedObject(class=C distName=A-1 version=1 operation=create){p(name=b)\"1\" "
            "list(name=l){p\"2\" p} p(name=a) list(name=s){item{p(name=q)\"3\"}} "
            "extension(name=e){p(name=r)\"4\"}}");
}

TEST(TarnMergeTest, CreatedObjectIsFoundByNameClassAndParameter) {
  const auto source = loaded(documentText(""));
  {
    const auto delta = loaded(documentText(objectText("A-1", "create", "<p name='x'>1</p>")));
    CapturedLog log;
    ASSERT_TRUE(TarnMerge(*source).mergeDocument(*delta));
    EXPECT_EQ(&objectIn(*delta, "A-1"), delta->getLibTarnCmData()->getLibTarnManagedObject("A-1"));
  }
  const LibTarnManagedObject& created = objectIn(*source, "A-1");
  EXPECT_EQ(created.getOperation(), Operation::CREATE);
  EXPECT_STREQ(created.getScalarParameter("x")->getValue(), "1");
  const auto byClass = source->getLibTarnCmData()->getLibTarnManagedObjectsByClass("C");
  ASSERT_NE(byClass.begin(), byClass.end());
  EXPECT_EQ(*byClass.begin(), &created);
  EXPECT_EQ(source->getLibTarnCmData()->getManagedObjectNumber(), 1U);
}

TEST(TarnMergeTest, DeletedObjectLeavesTreeAndIndex) {
  const auto source =
      loaded(documentText(objectText("A-1", "") + objectText("A-2", "") + objectText("A-3", "")));
  const auto delta =
      loaded(documentText(objectText("A-2", "delete") + objectText("A-1", "delete")));
  CapturedLog log;
  ASSERT_TRUE(TarnMerge(*source).mergeDocument(*delta));
  EXPECT_EQ(objectsOf(*source), "managedObject(class=C distName=A-3 version=1)");
  EXPECT_EQ(source->getLibTarnCmData()->getManagedObjectNumber(), 1U);
  EXPECT_FALSE(source->getLibTarnCmData()->hasLibTarnManagedObject("A-1"));
}

TEST(TarnMergeTest, AutoUpdatesWhatIsThereAndCreatesWhatIsNot) {
  const auto source = loaded(documentText(objectText("A-1", "", "<p name='x'>1</p>")));
  // No operation counts as "auto".
  const auto delta = loaded(documentText(objectText("A-1", "auto", "<p name='x'>2</p>") +
                                         objectText("A-2", "auto") + objectText("A-3", "")));
  CapturedLog log;
  ASSERT_TRUE(TarnMerge(*source).mergeDocument(*delta));
  EXPECT_EQ(objectsOf(*source),
            "managedObject(class=C distName=A-1 version=1){p(name=x)\"2\"} "
            "managedObject(class=C distName=A-2 version=1 operation=create) "
            "managedObject(class=C distName=A-3 version=1 operation=create)");
  EXPECT_EQ(objectIn(*source, "A-2").getOperation(), Operation::CREATE);
  EXPECT_EQ(objectIn(*delta, "A-1").getOperation(), Operation::UPDATE);
  EXPECT_EQ(objectIn(*delta, "A-2").getOperation(), Operation::CREATE);
  EXPECT_EQ(objectIn(*delta, "A-3").getOperation(), Operation::CREATE);
  EXPECT_EQ(objectsOf(*delta),
            "managedObject(class=C distName=A-1 version=1 operation=update){p(name=x)\"2\"} "
            "managedObject(class=C distName=A-2 version=1 operation=create) "
            "managedObject(class=C distName=A-3 version=1 operation=create)");
}

TEST(TarnMergeTest, ObjectWithoutNameIsCreatedUpdatedAndDeleted) {
  const auto source = loaded(documentText(""));
  TarnMerge merge(*source);
  CapturedLog log;
  EXPECT_TRUE(merge.mergeDocument(*loaded(documentText("<managedObject/>"))));
  EXPECT_EQ(objectsOf(*source), "managedObject(operation=create)");
  EXPECT_TRUE(merge.mergeDocument(
      *loaded(documentText("<managedObject><p name='x'>1</p></managedObject>"))));
  EXPECT_EQ(objectsOf(*source), "managedObject(operation=create){p(name=x)\"1\"}");
  EXPECT_TRUE(merge.mergeDocument(*loaded(documentText("<managedObject operation='delete'/>"))));
  EXPECT_EQ(objectsOf(*source), "");
}

TEST(TarnMergeTest, SameDeltaTwiceConflictsAtItsCreates) {
  const auto source = loaded(documentText(""));
  const auto delta = loaded(documentText(objectText("A-1", "create")));
  TarnMerge merge(*source);
  CapturedLog log;
  EXPECT_TRUE(merge.mergeDocument(*delta));
  EXPECT_FALSE(merge.mergeDocument(*delta));
  EXPECT_EQ(log.messages("ERROR"),
            (Strings{"A 'managedObject' element with 'distName=A-1' already exists"}));
}

// Update

TEST(TarnMergeTest, UpdateTouchesNoAttributeOfTheObject) {
  EXPECT_EQ(merged(documentText("<managedObject class='C' distName='A-1' version='1' "
                                "operation='create'/>"),
                   documentText("<managedObject class='D' distName='A-1' version='2' "
                                "operation='update'/>")),
            "managedObject(class=C distName=A-1 version=1 operation=create)");
}

TEST(TarnMergeTest, UpdateChangesTextsAndAddsMissingParametersInTheOrderOfNames) {
  EXPECT_EQ(mergedObject("<p name='b' kind='k'>1</p><p name='kept'>0</p>",
                         "<p name='d'>4</p><p name='c'>3</p><p name='b'>2</p>"),
            "managedObject(class=C distName=A-1 version=1){p(name=b kind=k)\"2\" "
            "p(name=kept)\"0\" p(name=c)\"3\" p(name=d)\"4\"}");
}

TEST(TarnMergeTest, UpdateWithEmptyTextEmptiesTheParameter) {
  EXPECT_EQ(mergedObject("<p name='a'>1</p><p name='b'/>", "<p name='a'/><p name='b'></p>"),
            "managedObject(class=C distName=A-1 version=1){p(name=a) p(name=b)}");
}

TEST(TarnMergeTest, UpdateKeepsTheElementOfTheParameter) {
  const auto source = loaded(documentText(objectText("A-1", "", "<p name='x'>1</p>")));
  const Scalar* const before = objectIn(*source, "A-1").getScalarParameter("x");
  CapturedLog log;
  ASSERT_TRUE(TarnMerge(*source).mergeDocument(
      *loaded(documentText(objectText("A-1", "update", "<p name='x'>longer than before</p>")))));
  EXPECT_EQ(objectIn(*source, "A-1").getScalarParameter("x"), before);
  EXPECT_STREQ(before->getValue(), "longer than before");
}

TEST(TarnMergeTest, ParametersWithoutNameAreTheOneWithTheEmptyName) {
  EXPECT_EQ(mergedObject("<p>1</p>", "<p name=''>2</p>"),
            "managedObject(class=C distName=A-1 version=1){p\"2\"}");
  EXPECT_EQ(mergedObject("<p name=''>1</p>", "<p>2</p><list><p>3</p></list><extension/>"),
            "managedObject(class=C distName=A-1 version=1){p(name=)\"2\" list{p\"3\"} extension}");
  EXPECT_EQ(mergedObject("<list/><extension/>",
                         "<list name=''><p>3</p></list><extension name=''><p/></extension>"),
            "managedObject(class=C distName=A-1 version=1){list(name=){p\"3\"} "
            "extension(name=){p}}");
}

TEST(TarnMergeTest, UpdateReplacesListsWhole) {
  EXPECT_EQ(mergedObject("<list name='b'><item><p name='x'>1</p></item></list>"
                         "<list name='kept'><p>0</p></list><list name='a'><p>1</p><p>2</p></list>",
                         "<list name='b'><p>5</p></list><list name='a'/>"),
            "managedObject(class=C distName=A-1 version=1){list(name=kept){p\"0\"} list(name=a) "
            "list(name=b){p\"5\"}}");
}

TEST(TarnMergeTest, UpdateReplacesExtensionsWhole) {
  EXPECT_EQ(mergedObject("<extension name='e'><p name='x'>1</p><p name='y'>1</p></extension>"
                         "<extension name='kept'/>",
                         "<extension name='f'/><extension name='e'><p name='x'>2</p></extension>"),
            "managedObject(class=C distName=A-1 version=1){extension(name=kept) extension(name=f) "
            "extension(name=e){p(name=x)\"2\"}}");
}

TEST(TarnMergeTest, TheDeltasExtensionReplacesAllOfItsName) {
  EXPECT_EQ(mergedObject("<extension name='e'/><extension name='f'/><extension name='e'><p/>"
                         "</extension><extension name='e'/>",
                         "<extension name='e'><p name='x'/></extension>"),
            "managedObject(class=C distName=A-1 version=1){extension(name=f) "
            "extension(name=e){p(name=x)}}");
}

TEST(TarnMergeTest, LastOfTheDeltasExtensionsOfANameStays) {
  EXPECT_EQ(mergedObject("<extension name='e'/>",
                         "<extension name='e'><p name='1'/></extension><extension name='f'/>"
                         "<extension name='e'><p name='2'/></extension><extension name='g'/>"),
            "managedObject(class=C distName=A-1 version=1){extension(name=f) "
            "extension(name=e){p(name=2)} extension(name=g)}");
}

TEST(TarnMergeTest, UpdatedListsAndParametersAreIndexed) {
  const auto source = loaded(documentText(objectText("A-1", "", "<list name='l'><p>1</p></list>")));
  CapturedLog log;
  ASSERT_TRUE(TarnMerge(*source).mergeDocument(*loaded(documentText(objectText(
      "A-1", "update", "<list name='l'><p>2</p></list><p name='n'>3</p><extension name='e'/>")))));
  const LibTarnManagedObject& updated = objectIn(*source, "A-1");
  EXPECT_STREQ(updated.getListParameter("l")->getScalarValues()->getValue(), "2");
  EXPECT_STREQ(updated.getScalarParameter("n")->getValue(), "3");
  EXPECT_TRUE(updated.hasExtension("e"));
}

// Header

std::string logs(int from, int to) {
  std::string text = "<header>";
  for (int i = from; i < to; ++i) {
    text += "<log dateTime='d" + std::to_string(i) + "' action='a'>" + std::to_string(i) + "</log>";
  }
  return text + "</header>";
}

Strings logTexts(const LibTarnDocument& document) {
  Strings texts;
  const LibTarnHeader* const header = document.getLibTarnCmData()->getLibTarnHeader();
  if (!header) return texts;
  for (const Log* log = header->getLogs(); log; log = log->getNextSiblingElement()) {
    texts.push_back(std::string(log->getDateTime()) + " " + log->getAction() + " " +
                    log->getValue());
  }
  return texts;
}

Strings expectedLogs(int from, int to) {
  Strings texts;
  for (int i = from; i < to; ++i) {
    texts.push_back("d" + std::to_string(i) + " a " + std::to_string(i));
  }
  return texts;
}

TEST(TarnMergeTest, LogsOfTheDeltaFollowThoseOfTheSource) {
  const auto source = loaded(documentText("", logs(0, 3)));
  CapturedLog log;
  ASSERT_TRUE(TarnMerge(*source).mergeDocument(*loaded(documentText("", logs(3, 5)))));
  EXPECT_EQ(logTexts(*source), expectedLogs(0, 5));
}

TEST(TarnMergeTest, HeaderKeepsTheLastFiftyLogs) {
  const auto source = loaded(documentText("", logs(0, 60)));
  CapturedLog log;
  TarnMerge merge(*source);
  ASSERT_TRUE(merge.mergeDocument(*loaded(documentText("", "<header/>"))));
  EXPECT_EQ(logTexts(*source), expectedLogs(0, 60));
  ASSERT_TRUE(merge.mergeDocument(*loaded(documentText("", logs(60, 65)))));
  EXPECT_EQ(logTexts(*source), expectedLogs(15, 65));
  ASSERT_TRUE(merge.mergeDocument(*loaded(documentText("", logs(65, 165)))));
  EXPECT_EQ(logTexts(*source), expectedLogs(115, 165));
}

TEST(TarnMergeTest, MergeWithoutAHeaderOnEitherSideSkipsTheLogs) {
  CapturedLog log;
  const auto source = loaded(documentText("", ""));
  EXPECT_TRUE(TarnMerge(*source).mergeDocument(
      *loaded(documentText(objectText("A-1", "create"), logs(0, 2)))));
  EXPECT_EQ(objectsOf(*source), "managedObject(class=C distName=A-1 version=1 operation=create)");
  EXPECT_EQ(source->getLibTarnCmData()->getLibTarnHeader(), nullptr);

  const auto withHeader = loaded(documentText("", logs(0, 2)));
  EXPECT_TRUE(TarnMerge(*withHeader).mergeDocument(*loaded(documentText("", ""))));
  EXPECT_EQ(logTexts(*withHeader), expectedLogs(0, 2));
}

// Single objects

TEST(TarnMergeTest, SingleObjectIsAppliedOrRefusedWithoutALogLine) {
  const struct {
    const char* name;
    const char* operation;
    bool applied;
    const char* result;
  } cases[] = {
      {"A-1", "create", false, "managedObject(class=C distName=A-1 version=1)"},
      {"A-1", "update", true, "managedObject(class=C distName=A-1 version=1){p(name=x)\"1\"}"},
      {"A-1", "auto", true, "managedObject(class=C distName=A-1 version=1){p(name=x)\"1\"}"},
      {"A-1", "", true, "managedObject(class=C distName=A-1 version=1){p(name=x)\"1\"}"},
      {"A-1", "delete", true, ""},
      {"B-1", "create", true,
       "managedObject(class=C distName=A-1 version=1) "
       "managedObject(class=C distName=B-1 version=1 operation=create){p(name=x)\"1\"}"},
      // The copied object still has the values of the delta.
      {"B-1", "auto", true,
       "managedObject(class=C distName=A-1 version=1) "
       "managedObject(class=C distName=B-1 version=1 operation=auto){p(name=x)\"1\"}"},
      {"B-1", "update", false, "managedObject(class=C distName=A-1 version=1)"},
      {"B-1", "delete", false, "managedObject(class=C distName=A-1 version=1)"},
  };
  for (const auto& c : cases) {
    const auto source = loaded(documentText(objectText("A-1", "")));
    const auto delta =
        loaded(documentText(objectText(c.name, c.operation, "<p name='x'>1</p>"), logs(0, 1)));
    const std::string deltaBefore = delta->getItsTarnDomDocument()->printDocument();
    CapturedLog log;
    EXPECT_EQ(TarnMerge(*source).mergeManagedObject(objectIn(*delta, c.name)), c.applied);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(objectsOf(*source), c.result) << c.name << c.operation;
    EXPECT_TRUE(logTexts(*source).empty());
    EXPECT_EQ(delta->getItsTarnDomDocument()->printDocument(), deltaBefore);
  }
}

TEST(TarnMergeTest, SingleObjectNeedsASourceWithCmData) {
  LibTarnDocument source;
  const auto delta = loaded(documentText(objectText("A-1", "create")));
  CapturedLog log;
  EXPECT_FALSE(TarnMerge(source).mergeManagedObject(objectIn(*delta, "A-1")));
  ASSERT_EQ(log.lines().size(), 1U);
  EXPECT_EQ(log.lines()[0].level, "ERROR");
  EXPECT_EQ(log.lines()[0].function, "mergeManagedObject");
  EXPECT_EQ(log.lines()[0].location, "src/libTARN/editor/TarnMerge.cpp:266");
  EXPECT_EQ(log.lines()[0].message, "Source document doesn't have cmData node");
}

TEST(TarnMergeTest, UpdateOfAnObjectWithItselfChangesNothing) {
  const auto source =
      loaded(documentText(objectText("A-1", "update",
                                     "<p name='x'>1</p><list name='l'><p>1</p></list><extension "
                                     "name='e'/><extension name='e'/>")));
  const std::string before = dumpOf(*source);
  CapturedLog log;
  EXPECT_TRUE(TarnMerge(*source).mergeManagedObject(objectIn(*source, "A-1")));
  EXPECT_EQ(dumpOf(*source), before);
  EXPECT_TRUE(log.lines().empty());
}

TEST(TarnMergeTest, ObjectOfTheSourceCanDeleteItself) {
  const auto source = loaded(documentText(objectText("A-1", "delete")));
  CapturedLog log;
  EXPECT_TRUE(TarnMerge(*source).mergeManagedObject(objectIn(*source, "A-1")));
  EXPECT_EQ(source->getLibTarnCmData()->getManagedObjectNumber(), 0U);
}

TEST(TarnMergeTest, ObjectMadeByTheSourcesFactoryIsCopied) {
  const auto source = loaded(documentText(""));
  LibTarnManagedObject* const made =
      source->getFactory().createLibTarnManagedObject("C", "A-1", Operation::CREATE, "1");
  CapturedLog log;
  EXPECT_TRUE(TarnMerge(*source).mergeManagedObject(*made));
  EXPECT_NE(&objectIn(*source, "A-1"), made);
}

// Cost

// Number of blocks that a merge of `delta` takes with that number of objects in the source.
std::size_t blocksOfMerge(int sourceObjects, LibTarnDocument& delta) {
  std::string text;
  for (int i = 0; i < sourceObjects; ++i) text += objectText("S-" + std::to_string(i), "");
  HeapDocument source(documentText(text));
  TarnMerge merge(source.get());
  const std::size_t before = tarn_test::heapAllocations();
  EXPECT_TRUE(merge.mergeDocument(delta));
  return tarn_test::heapAllocations() - before;
}

TEST(TarnMergeTest, MemoryOfAMergeGrowsWithTheDeltaOnly) {
  std::string text = objectText("S-0", "update", "<p name='x'>1</p>") + objectText("S-1", "delete");
  for (int i = 0; i < 2000; ++i)
    text += objectText("A-" + std::to_string(i), "create", "<p name='x'/>");
  const auto delta = loaded(documentText(text));
  const std::size_t small = blocksOfMerge(10, *delta);
  const std::size_t large = blocksOfMerge(10000, *delta);
  EXPECT_GT(small, 0U);
  EXPECT_LE(large, small + 3);  // blocks that were begun, and a hash table that doubled
}

// Steps

LibTarnManagedObject* made(LibTarnDocument& document, const char* name) {
  return document.getFactory().createLibTarnManagedObject("C", name, nullptr);
}

TEST(TarnMergeTest, StepsAreThereForHosts) {
  const auto source = loaded(documentText(objectText("A-1", "")));
  const auto delta = loaded(documentText(objectText("A-2", "update"), logs(0, 1)));
  TarnMerge merge(*source);
  LibTarnCmDataImp* const deltaCmData = merge.getCmData(*delta);
  EXPECT_EQ(deltaCmData, delta->getLibTarnCmData());
  LibTarnDocument empty;
  EXPECT_EQ(merge.getCmData(empty), nullptr);

  LibTarnManagedObject& there = objectIn(*source, "A-1");
  EXPECT_EQ(merge.getExplicitOperationFromAutoOperation(&there), Operation::UPDATE);
  EXPECT_EQ(merge.getExplicitOperationFromAutoOperation(nullptr), Operation::CREATE);
  try {
    merge.goThroughAllDeltaMoWithExecutor(deltaCmData, &TarnMerge::checkForMergeConflicts);
    ADD_FAILURE();
  } catch (const EditorException& conflict) {
    EXPECT_STREQ(conflict.what(),
                 "There is no 'managedObject' element with 'distName=A-2' to update");
  }
  CapturedLog log;
  EXPECT_FALSE(merge.doMerge(deltaCmData));
  EXPECT_EQ(log.messages("ERROR").size(), 1U);
  merge.doOperationCreate(&objectIn(*delta, "A-2"));
  merge.doOperationDelete("A-1");
  // The name selects the object to delete.
  const auto remover = loaded(documentText(objectText("A-3", "delete")));
  merge.doOperationCreate(&objectIn(*remover, "A-3"));
  merge.doOperationCreate(made(*source, "A-4"));
  merge.mergeDocuments(&objectIn(*source, "A-4"), &objectIn(*remover, "A-3"), "A-4");
  EXPECT_FALSE(source->getLibTarnCmData()->hasLibTarnManagedObject("A-4"));
  merge.doOperationDelete("A-3");
  merge.addHeaders(deltaCmData);
  EXPECT_EQ(objectsOf(*source), "managedObject(class=C distName=A-2 version=1 operation=update)");
  EXPECT_EQ(logTexts(*source), expectedLogs(0, 1));
}

TEST(TarnMergeTest, SourceIsRefusedAsItsOwnDelta) {
  const auto source =
      loaded(documentText(objectText("A-1", "update", "<list name='l'/><extension name='e'/>") +
                              objectText("A-2", "auto"),
                          logs(0, 3)));
  TarnMerge merge(*source);
  CapturedLog log;
  const std::string before = dumpOf(*source);
  EXPECT_FALSE(merge.doMerge(merge.getCmData(*source)));
  EXPECT_EQ(log.messages("ERROR"), Strings{"Source and delta are the same document"});
  EXPECT_EQ(dumpOf(*source), before);

  LibTarnManagedObject& own = objectIn(*source, "A-1");
  log.clear();
  merge.updateScalars(&own, &own);
  merge.updateLists(&own, &own);
  merge.updateExtensions(&own, &own);
  EXPECT_EQ(log.messages("ERROR"), Strings(3, "Source and delta are the same object"));
  EXPECT_EQ(dumpOf(*source), before);
  EXPECT_EQ(brokenDocument(*source), "");
}

// The copy of an abbreviated element has the full tag, and may break a rule that the original did
// not.
TEST(TarnMergeTest, CopiesHaveTheTagsOfTheirClasses) {
  const auto source = loaded(documentText(""));
  LibTarnDocument delta;
  ASSERT_EQ(delta.parse(documentText(objectText("A-1", "create", "<e><p/></e>")).c_str(), true), 0);
  EXPECT_TRUE(TarnMerge(*source).mergeDocument(delta));
  EXPECT_EQ(objectsOf(*source),
            "managedObject(class=C distName=A-1 version=1 operation=create){extension{p}}");
  CapturedLog log;
  EXPECT_EQ(source->validate(), 2);
}

TEST(TarnMergeDeathTest, StepsNeedSourceAndDelta) {
  LibTarnDocument empty;
  const auto good = loaded(documentText(objectText("A-1", "")));
  TarnMerge ofEmpty(empty);
  TarnMerge ofGood(*good);
  EXPECT_DEATH(ofEmpty.doMerge(ofGood.getCmData(*good)), "cmData && delta");
  EXPECT_DEATH(ofGood.doMerge(nullptr), "cmData && delta");
  EXPECT_DEATH(ofEmpty.doMerge(nullptr), "cmData && delta");
  EXPECT_DEATH(ofEmpty.mergeDocuments(nullptr, &objectIn(*good, "A-1"), "A-1"), "cmData && delta");
  EXPECT_DEATH(ofGood.addHeaders(nullptr), "cmData && delta");
  EXPECT_DEATH(ofGood.doOperationUpdate(nullptr, &objectIn(*good, "A-1")), "source && delta");
}

// Faults that the delta's load does not find

// Neither load nor validation look at elements where the model has none, but a copy does.
TEST(TarnMergeTest, CopyFindsFaultsOfElementsWhereTheModelHasNone) {
  const struct {
    std::string body;
    const char* message;
  } cases[] = {
      {"<managedObject operation='x'/>",
       "'x' is not a valid value of 'managedObject' attribute 'operation'"},
      {"<managedObject distName='D'><p name='n'/><p name='n'/></managedObject>",
       "The 'D' element already contains a 'p' element with 'name=n'"},
      {"<managedObject><list/><list/></managedObject>",
       "The '' element already contains a 'list' element with 'name='"},
      {"<extension><managedObject operation='x'/></extension>",
       "'x' is not a valid value of 'managedObject' attribute 'operation'"},
      {"<header><managedObject operation='x'/></header>",
       "'x' is not a valid value of 'managedObject' attribute 'operation'"},
      {"<list name='l'><managedObject operation='x'/></list>",
       "'x' is not a valid value of 'managedObject' attribute 'operation'"},
      {"<item><p name='n'/><p name='n'/></item>",
       "The '(list: )' element already contains a 'p' element with 'name=n'"},
      {"<extension><list name='l'><item><p/><p/></item></list></extension>",
       "The '(list: )' element already contains a 'p' element with 'name='"},
      {"<list name='l'><list name='k'><item><p/><p/></item></list></list>",
       "The '(list: )' element already contains a 'p' element with 'name='"},
      {"<list name='l'><item><item><p/><p/></item></item></list>",
       "The '(list: )' element already contains a 'p' element with 'name='"},
  };
  for (const auto& c : cases) {
    for (const char* const operation : {"create", "auto"}) {
      const auto source = loaded(documentText(""));
      LibTarnDocument delta;
      ASSERT_EQ(delta.parse(documentText(objectText("A-1", operation, c.body)).c_str(), true), 0)
          << c.body;
      CapturedLog log;
      try {
        TarnMerge(*source).mergeDocument(delta);
        ADD_FAILURE() << c.body;
      } catch (const exceptions::ModelException& error) {
        EXPECT_STREQ(error.what(), c.message);
      }
      EXPECT_TRUE(log.lines().empty());
    }
  }
}

}  // namespace
