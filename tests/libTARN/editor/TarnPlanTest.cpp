#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "support/CapturedLog.hpp"
#include "support/consistency.hpp"
#include "support/describe.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::Difference;
using libtarn::editor::TarnMerge;
using libtarn::editor::TarnPlan;
using tarn_test::CapturedLog;
using tarn_test::documentText;
using tarn_test::documentTextWithLog;
using tarn_test::loaded;
using tarn_test::objectText;
using tarn_test::printed;
using tarn_test::rootText;
using Strings = std::vector<std::string>;

Strings differencesOf(const TarnPlan& plan) {
  Strings lines;
  for (const Difference& each : plan.getDifferences()) lines.push_back(tarn_test::describe(each));
  return lines;
}

Strings conflictsOf(const TarnPlan& plan) {
  Strings lines;
  for (const auto& each : plan.getConflicts()) {
    lines.push_back(std::to_string(each.delta) + " " + each.distName + ": " + each.reason);
  }
  return lines;
}

TEST(TarnPlanTest, AllConflictsAreThere) {
  const auto source = loaded(documentText(objectText("A-1") + objectText("A-2")));
  const auto first = loaded(documentText(objectText("A-2", "create") + objectText("A-1", "delete") +
                                         objectText("A-3", "update")));
  const auto second =
      loaded(documentText(objectText("A-1", "update") + objectText("A-0", "delete")));
  const std::string before = printed(*source);
  TarnPlan plan(*source, {first.get(), second.get()});
  EXPECT_EQ(conflictsOf(plan),
            (Strings{"0 A-2: A 'managedObject' element with 'distName=A-2' already exists",
                     "0 A-3: There is no 'managedObject' element with 'distName=A-3' to update",
                     "1 A-0: There is no 'managedObject' element with 'distName=A-0' to delete",
                     "1 A-1: There is no 'managedObject' element with 'distName=A-1' to update"}));
  EXPECT_EQ(differencesOf(plan), (Strings{"-Object A-1 "}));
  CapturedLog log;
  EXPECT_FALSE(plan.apply());
  EXPECT_EQ(log.messages("ERROR"), (Strings{plan.getConflicts()[0].reason}));
  EXPECT_EQ(plan.getDiagnostic().code, EditResult::Refused);
  EXPECT_EQ(plan.getDiagnostic().message, plan.getConflicts()[0].reason);
  EXPECT_EQ(printed(*source), before);
}

TEST(TarnPlanTest, LaterDeltasSeeWhatEarlierOnesDo) {
  const auto source = loaded(documentText(objectText("A-1", "", "<p name='a'>1</p>") +
                                          objectText("A-2", "", "<p name='a'>1</p>")));
  const auto first = loaded(documentText(objectText("A-1", "delete") + objectText("A-3", "create") +
                                         objectText("A-2", "update", "<p name='b'>1</p>")));
  const auto second = loaded(documentText(objectText("A-1", "create", "<p name='a'>2</p>") +
                                          objectText("A-3", "auto", "<p name='b'>3</p>") +
                                          objectText("A-2", "update", "<p name='b'>2</p>")));
  TarnPlan plan(*source, {first.get(), second.get()});
  EXPECT_EQ(conflictsOf(plan), Strings());
  EXPECT_EQ(differencesOf(plan),
            (Strings{"~Parameter A-1 a 1 -> 2", "+Parameter A-2 b 2", "+Object A-3 "}));
  ASSERT_TRUE(plan.apply());
  EXPECT_EQ(source->getLibTarnCmData()->getManagedObjectNumber(), 3U);
  const auto* const third = source->getLibTarnCmData()->getLibTarnManagedObject("A-3");
  EXPECT_STREQ(third->getScalarParameter("b")->getValue(), "3");
  EXPECT_EQ(tarn_test::brokenDocument(*source), "");
}

// More parameters than a step or two away, in the array and in the tree of an index.
TEST(TarnPlanTest, FewParametersOfManyAreFound) {
  for (const int count : {30, 60, 500}) {
    std::string parameters;
    std::string lists;
    for (int i = 0; i < count; ++i) {
      const std::string name = std::to_string(1000 + i);
      parameters += "<p name='" + name + "'>1</p>";
      lists += "<list name='" + name + "'><p>1</p></list>";
    }
    const std::string text = documentText(objectText("A-1", "", parameters + lists));
    const auto original = loaded(text);
    const auto source = loaded(text);
    // Of 500, the index of these turns into a tree.
    for (const auto& each : {original.get(), source.get()}) {
      each->getLibTarnCmData()->getLibTarnManagedObject("A-1")->removeScalarParameter("1003");
    }
    std::string changes;
    for (const char* const name : {"1001", "1002", "1003", "1025", "1026", "10265", "1499", "2"}) {
      changes += std::string("<p name='") + name + "'>2</p><list name='" + name + "'/>";
    }
    const auto delta = loaded(documentText(objectText("A-1", "update", changes)));
    TarnPlan plan(*source, *delta);
    const Strings differences = differencesOf(plan);
    EXPECT_EQ(differences.front(), "~Parameter A-1 1001 1 -> 2");
    ASSERT_TRUE(plan.apply());
    Strings found;
    for (const Difference& each : libtarn::editor::TarnDiff(*original, *source).getDifferences()) {
      found.push_back(tarn_test::describe(each));
    }
    EXPECT_EQ(differences, found) << count;
  }
}

TEST(TarnPlanTest, OtherClassAndVersionAreOmitted) {
  const auto source = loaded(documentText("<managedObject class='C' distName='A-1'/>"));
  const auto delta = loaded(
      documentText("<managedObject class='D' distName='A-1' version='2' operation='update'/>"));
  const TarnPlan plan(*source, *delta);
  EXPECT_EQ(differencesOf(plan), Strings());
  ASSERT_EQ(plan.getOmissions().size(), 2U);
  EXPECT_EQ(plan.getOmissions()[0].part, Difference::Part::Class);
  EXPECT_STREQ(plan.getOmissions()[0].kept, "C");
  EXPECT_STREQ(plan.getOmissions()[0].omitted, "D");
  EXPECT_EQ(plan.getOmissions()[1].part, Difference::Part::Version);
  EXPECT_EQ(plan.getOmissions()[1].kept, nullptr);
  EXPECT_STREQ(plan.getOmissions()[1].omitted, "2");
  EXPECT_STREQ(plan.getOmissions()[1].distName, "A-1");
  EXPECT_EQ(plan.getOmissions()[1].object,
            delta->getLibTarnCmData()->getLibTarnManagedObject("A-1"));
}

TEST(TarnPlanTest, WhatACopyThrowsIsAConflict) {
  const auto source = loaded(documentText(objectText("A-1")));
  const auto delta = loaded(documentText(
      objectText("A-1", "update",
                 "<list name='l'><item><item><p name='a'/><p name='a'/></item></item></list>")));
  TarnPlan plan(*source, *delta);
  EXPECT_EQ(conflictsOf(plan), (Strings{"0 A-1: The '(list: )' element already contains a 'p' "
                                        "element with 'name=a'"}));
  EXPECT_EQ(differencesOf(plan), Strings());
  const CapturedLog log;
  EXPECT_FALSE(plan.apply());
}

TEST(TarnPlanTest, DocumentsThatCannotBeMergedAreConflicts) {
  const auto source = loaded(documentText(""));
  const auto empty = loaded(rootText(""));
  EXPECT_EQ(conflictsOf(TarnPlan(*source, {empty.get(), source.get()})),
            (Strings{"0 : Delta document doesn't have cmData node",
                     "1 : Source and delta are the same document"}));
  EXPECT_EQ(conflictsOf(TarnPlan(*empty, *source)),
            (Strings{"0 : Source document doesn't have cmData node"}));
  TarnPlan none(*empty, std::vector<LibTarnDocument*>());
  EXPECT_EQ(conflictsOf(none), Strings());
  EXPECT_TRUE(none.apply());
}

TEST(TarnPlanTest, SourceWithTwoObjectsOfOneNameIsRefused) {
  const auto source = loaded(documentText(objectText("A-1") + objectText("A-2")));
  const auto delta = loaded(documentText(objectText("A-1", "delete")));
  const CapturedLog log;
  source->getLibTarnCmData()->getLibTarnManagedObject("A-2")->setDistName("A-1");
  TarnPlan plan(*source, *delta);
  EXPECT_EQ(conflictsOf(plan), (Strings{"0 : The 'cmData' element already contains a "
                                        "'managedObject' element with 'distName=A-1'"}));
  EXPECT_FALSE(plan.apply());
}

TEST(TarnPlanTest, ChangeAfterThePlanIsFoundByApply) {
  const auto source = loaded(documentText(objectText("A-1")));
  const auto first = loaded(documentText(objectText("A-2", "create")));
  const auto second = loaded(documentText(objectText("A-1", "delete")));
  TarnPlan plan(*source, {first.get(), second.get()});
  EXPECT_EQ(conflictsOf(plan), Strings());
  source->getLibTarnCmData()->removeLibTarnManagedObject("A-1");
  const std::string before = printed(*source);
  CapturedLog log;
  EXPECT_FALSE(plan.apply());
  EXPECT_EQ(log.messages("ERROR").size(), 1U);
  EXPECT_EQ(printed(*source), before);
  EXPECT_EQ(tarn_test::brokenDocument(*source), "");
}

TEST(TarnPlanTest, OneDocumentMayBeMoreThanOneOfTheDeltas) {
  const auto source = loaded(documentText(""));
  const auto delta = loaded(documentText(objectText("A-1", "auto")));
  // The first merge makes "create" of "auto".
  EXPECT_EQ(conflictsOf(TarnPlan(*source, {delta.get(), delta.get()})),
            (Strings{"1 A-1: A 'managedObject' element with 'distName=A-1' already exists"}));
}

TEST(TarnPlanTest, LogEntriesAreAppended) {
  const auto source = loaded(documentTextWithLog(""));
  const auto delta = loaded(documentTextWithLog(objectText("A-1", "auto")));
  TarnPlan plan(*source, {delta.get()});
  ASSERT_TRUE(plan.apply());
  EXPECT_NE(source->getLibTarnCmData()->getLibTarnHeader()->getLogs()->getNextSiblingElement(),
            nullptr);
}

TEST(TarnPlanTest, WhatAHostUnlinkedWithoutItsIndexIsNoDifference) {
  const auto source =
      loaded(documentText(objectText("A-1", "", "<p name='a'>1</p>") + objectText("A-2")));
  auto& body = *source->getLibTarnCmData();
  body.getLibTarnManagedObject("A-1")->getScalarParameter("a")->removeThisElement();
  body.getLibTarnManagedObject("A-2")->removeThisElement();
  const auto delta = loaded(
      documentText(objectText("A-1", "update", "<p name='a'>2</p>") + objectText("A-2", "delete")));
  const TarnPlan plan(*source, *delta);
  EXPECT_EQ(conflictsOf(plan), Strings());
  EXPECT_EQ(differencesOf(plan), Strings());
}

}  // namespace
