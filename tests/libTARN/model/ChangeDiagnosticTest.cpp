// Changes by mask that are refused, and why.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "support/CapturedLog.hpp"
#include "support/HeapCount.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"

namespace {

using namespace libtarn::model;
using libtarn::util::ManagedObjectBuilder;
using tarn_test::brokenDocument;
using tarn_test::CapturedLog;
using tarn_test::documentText;
using tarn_test::HeapFault;
using tarn_test::objectText;
using tarn_test::printed;

using Strings = std::vector<std::string>;

// Loads without a fault, and its copy is refused.
constexpr const char* BROKEN_LIST =
    "<list name='l'><item><item><p name='n'/><p name='n'/></item></item></list>";

std::string takenMessage(const std::string& name) {
  return "The 'cmData' element already contains a 'managedObject' element with 'distName=" + name +
         "'";
}

class ChangeDiagnosticTest : public ::testing::Test {
 protected:
  void load(const std::string& objects) {
    document_ = tarn_test::loaded(documentText(objects));
    log_.clear();
  }
  LibTarnManagedObject& object(const char* name) {
    return *document_->getLibTarnCmData()->getLibTarnManagedObject(name);
  }
  ManagedObjectBuilder made() { return ManagedObjectBuilder(*document_); }
  LibTarnManagedObject& named(const char* distName) { return made().setDistName(distName).get(); }
  // Version 7, a parameter, and a list that no object may get.
  LibTarnManagedObject& brokenValues() {
    holder_ =
        tarn_test::loaded(documentText("<managedObject class='C' distName='B-1' version='7'>" +
                                       std::string(BROKEN_LIST) + "</managedObject>"));
    return *holder_->getLibTarnCmData()->getLibTarnManagedObject("B-1");
  }
  bool isFound(const LibTarnManagedObject& object) {
    return document_->getLibTarnCmData()->getLibTarnManagedObject(object.getDistName()) == &object;
  }

  CapturedLog log_;
  std::unique_ptr<LibTarnDocument> document_;
  std::unique_ptr<LibTarnDocument> holder_;
};

void expectReason(const Diagnostic& found, int code, const std::string& message) {
  EXPECT_EQ(found.code, code);
  EXPECT_EQ(found.message, message);
  EXPECT_EQ(found.offset, 0U);
}

TEST_F(ChangeDiagnosticTest, ChangeThatIsMadeHasNoReason) {
  load(objectText("A-1/B-1"));
  LibTarnManagedObject& changed = object("A-1/B-1");
  LibTarnManagedObject& values = made().setDistName("A-2").setVersion("7").get();
  expectReason(changed.tryChange(named("A-1"), values), ChangeResult::Done, "");
  EXPECT_STREQ(changed.getDistName().getText(), "A-2/B-1");
  EXPECT_STREQ(changed.getVersion(), "7");
  expectReason(changed.tryChange(made().get(), made().get()), ChangeResult::Done, "");
  // The object itself has nothing new.
  expectReason(changed.tryChange(named("B-1"), changed), ChangeResult::Done, "");
  // A name that is not found is not replaced.
  expectReason(changed.tryChange(made().get(), named("no name")), ChangeResult::Done, "");
  EXPECT_STREQ(changed.getDistName().getText(), "A-2/B-1");
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(ChangeDiagnosticTest, ObjectThatDoesNotMatchIsNotChanged) {
  load(objectText("A-1") + "<managedObject class='C' version='1'/>");
  const std::string before = printed(*document_);
  LibTarnManagedObject& values = made().setVersion("7").get();
  expectReason(object("A-1").tryChange(named("A-2"), values), ChangeResult::NoMatch,
               "The 'managedObject' element with 'distName=A-1' doesn't match the mask");
  expectReason(object("").tryChange(named("A-2"), values), ChangeResult::NoMatch,
               "The 'managedObject' element with 'distName=' doesn't match the mask");
  EXPECT_EQ(printed(*document_), before);
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(ChangeDiagnosticTest, BrokenRuleHasTheMessageOfItsException) {
  load(objectText("A-1"));
  const std::string before = printed(*document_);
  LibTarnManagedObject& values = brokenValues();
  std::string message;
  try {
    object("A-1").change(made().get(), values);
  } catch (const exceptions::ModelException& error) {
    message = error.what();
  }
  EXPECT_NE(message, "");
  expectReason(object("A-1").tryChange(made().get(), values), ChangeResult::BrokenRule, message);
  EXPECT_EQ(printed(*document_), before);
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(ChangeDiagnosticTest, NameThatTheValidatorRejectsIsReportedAndAllElseChanged) {
  load(objectText("A-1/B-1"));
  LibTarnManagedObject& changed = object("A-1/B-1");
  LibTarnManagedObject& values = made().setDistName("no name").setVersion("7").get();
  expectReason(changed.tryChange(named("B-1"), values), ChangeResult::InvalidName,
               "Invalid distinguished name: 'A-1/no name'");
  EXPECT_STREQ(changed.getDistName().getText(), "A-1/B-1");
  EXPECT_STREQ(changed.getVersion(), "7");
  EXPECT_TRUE(isFound(changed));
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(ChangeDiagnosticTest, NameOfAnotherObjectIsReportedAsByValidate) {
  load(objectText("A-1") + objectText("A-2"));
  LibTarnManagedObject& changed = object("A-1");
  expectReason(changed.tryChange(named("A-1"), named("A-2")), ChangeResult::NameTaken,
               takenMessage("A-2"));
  EXPECT_FALSE(isFound(changed));
  EXPECT_EQ(log_.messages("ERROR"),
            (Strings{"Adding object to index failed, that shouldn't happen"}));
  EXPECT_EQ(document_->validate(), ParseResult::BrokenRule);
  EXPECT_EQ(document_->getDiagnostic().message, takenMessage("A-2"));
  // Also for the name that it has, and no more once it has one of its own.
  expectReason(changed.tryChange(made().get(), named("A-2")), ChangeResult::NameTaken,
               takenMessage("A-2"));
  expectReason(changed.tryChange(named("A-2"), named("A-3")), ChangeResult::Done, "");
  EXPECT_TRUE(isFound(changed));
}

TEST_F(ChangeDiagnosticTest, ObjectInNoDocumentMayHaveAnyValidName) {
  load(objectText("A-1"));
  LibTarnManagedObject& detached = named("A-2");
  expectReason(detached.tryChange(named("A-2"), named("A-1")), ChangeResult::Done, "");
  EXPECT_STREQ(detached.getDistName().getText(), "A-1");
}

TEST_F(ChangeDiagnosticTest, ReasonThatHasNoMemoryIsEmptyAndTheCodeStays) {
  bool happened = true;
  int withoutMessage = 0;
  for (std::size_t number = 1; happened; ++number) {
    load(objectText("A-1") + objectText("NETWORK-1/SITE-2/CELL-3"));
    LibTarnManagedObject& changed = object("A-1");
    LibTarnManagedObject& mask = named("A-1");
    LibTarnManagedObject& values = named("NETWORK-1/SITE-2/CELL-3");
    const std::string before = printed(*document_);
    Diagnostic found;
    bool isThrown = false;
    {
      const HeapFault fault(number);
      try {
        found = changed.tryChange(mask, values);
      } catch (const std::bad_alloc&) {
        isThrown = true;
      }
      happened = fault.happened();
    }
    if (isThrown) {
      EXPECT_EQ(printed(*document_), before) << number;
      continue;
    }
    EXPECT_EQ(found.code, ChangeResult::NameTaken) << number;
    if (found.message.empty()) {
      ++withoutMessage;
    } else {
      EXPECT_EQ(found.message, takenMessage("NETWORK-1/SITE-2/CELL-3"));
    }
  }
  EXPECT_GT(withoutMessage, 0);
}

TEST_F(ChangeDiagnosticTest, BrokenRuleWithoutMemoryForItsMessageIsThrown) {
  load(objectText("A-1"));
  LibTarnManagedObject& values = brokenValues();
  LibTarnManagedObject& mask = made().get();
  const std::string before = printed(*document_);
  const std::string message = object("A-1").tryChange(mask, values).message;
  bool happened = true;
  int thrown = 0;
  for (std::size_t number = 1; happened; ++number) {
    LibTarnManagedObject& changed = object("A-1");
    Diagnostic found;
    try {
      const HeapFault fault(number);
      found = changed.tryChange(mask, values);
      happened = fault.happened();
    } catch (const std::bad_alloc&) {
      ++thrown;
      continue;
    }
    expectReason(found, ChangeResult::BrokenRule, message);
  }
  EXPECT_GT(thrown, 1);
  EXPECT_EQ(printed(*document_), before);
}

// Of a document

TEST_F(ChangeDiagnosticTest, DocumentReportsEachObjectThatWasRefused) {
  load(objectText("A-1") + objectText("A-2") + objectText("A-3/X-1") + objectText("B-1"));
  LibTarnManagedObject& first = object("A-1");
  LibTarnManagedObject& second = object("A-2");
  std::vector<RefusedChange> refused(1);
  // become "B-1" and "B-2", A-3/X-1 becomes "B-3/X-1"; B-1 does not match.
  const Diagnostic result =
      document_->tryChangesToMOs(named("A-"), made().setDistName("B-").get(), &refused);
  expectReason(result, ChangeResult::NameTaken, takenMessage("B-1"));
  ASSERT_EQ(refused.size(), 1U);
  EXPECT_EQ(refused[0].object, &first);
  expectReason(refused[0].reason, ChangeResult::NameTaken, takenMessage("B-1"));
  EXPECT_STREQ(second.getDistName().getText(), "B-2");

  load(objectText("A-1") + objectText("A-2"));
  expectReason(document_->tryChangesToMOs(named("A-"),
                                          made().setDistName("!").setVersion("7").get(), &refused),
               ChangeResult::InvalidName, "Invalid distinguished name: '!1'");
  ASSERT_EQ(refused.size(), 2U);
  EXPECT_EQ(refused[1].object, &object("A-2"));
  expectReason(refused[1].reason, ChangeResult::InvalidName, "Invalid distinguished name: '!2'");
  EXPECT_STREQ(object("A-2").getVersion(), "7");

  expectReason(document_->tryChangesToMOs(made().get(), made().setVersion("8").get(), &refused),
               ChangeResult::Done, "");
  EXPECT_TRUE(refused.empty());
  EXPECT_STREQ(object("A-2").getVersion(), "8");
  expectReason(document_->tryChangesToMOs(named("Z-"), brokenValues(), &refused),
               ChangeResult::Done, "");
  EXPECT_TRUE(refused.empty());
}

TEST_F(ChangeDiagnosticTest, DocumentEndsAtABrokenRule) {
  load(objectText("A-1") + objectText("A-2"));
  const std::string before = printed(*document_);
  std::vector<RefusedChange> refused;
  const Diagnostic result = document_->tryChangesToMOs(made().get(), brokenValues(), &refused);
  EXPECT_EQ(result.code, ChangeResult::BrokenRule);
  ASSERT_EQ(refused.size(), 1U);
  EXPECT_EQ(refused[0].object, &object("A-1"));
  EXPECT_EQ(refused[0].reason.message, result.message);
  EXPECT_EQ(printed(*document_), before);
  EXPECT_EQ(brokenDocument(*document_), "");
}

TEST_F(ChangeDiagnosticTest, DocumentWithoutCmDataIsReported) {
  document_ = std::make_unique<LibTarnDocument>();
  std::vector<RefusedChange> refused(1);
  const Diagnostic result = document_->tryChangesToMOs(made().get(), made().get(), &refused);
  expectReason(result, ChangeResult::NoCmData, "Document doesn't have cmData node");
  EXPECT_TRUE(refused.empty());
  EXPECT_EQ(document_->tryChangesToMOs(made().get(), made().get()).code, ChangeResult::NoCmData);
  EXPECT_TRUE(log_.lines().empty());
}

TEST_F(ChangeDiagnosticTest, DocumentChangesAndLogsAsWithoutReasons) {
  struct Change {
    const char* name;
    const char* maskName;
    const char* newName;
    bool isBroken;
  };
  const Change changes[] = {{"done", "A-", "C-", false},
                            {"name taken", "A-", "B-", false},
                            {"invalid name", "-1", "!", false},
                            {"broken rule", "A-", "C-", true}};
  for (const Change& change : changes) {
    SCOPED_TRACE(change.name);
    Strings transcripts[2];
    for (const bool withReasons : {false, true}) {
      load(objectText("A-1") + objectText("A-2") + objectText("B-1") + objectText("B-2"));
      const LibTarnManagedObject& mask = named(change.maskName);
      const LibTarnManagedObject& values =
          change.isBroken ? brokenValues() : made().setDistName(change.newName).get();
      log_.clear();
      try {
        if (withReasons) {
          document_->tryChangesToMOs(mask, values);
        } else {
          document_->setChangesToMOs(mask, values);
        }
      } catch (const exceptions::ModelException&) {
        EXPECT_TRUE(change.isBroken && !withReasons);
      }
      for (const auto& line : log_.lines()) {
        transcripts[withReasons].push_back(line.level + line.function + line.message);
      }
      transcripts[withReasons].push_back(printed(*document_));
    }
    EXPECT_EQ(transcripts[0], transcripts[1]);
    EXPECT_GT(transcripts[0].size(), 2U);
  }
}

// A class of the host's with a change() of its own

class HostObject : public LibTarnManagedObjectImp {
 public:
  using LibTarnManagedObjectImp::LibTarnManagedObjectImp;
  bool change(const LibTarnManagedObject& pattern, const LibTarnManagedObject& values) override {
    return std::string(values.getVersion()) == "7" &&
           LibTarnManagedObjectImp::change(pattern, values);
  }
};

TEST_F(ChangeDiagnosticTest, ObjectOfAHostsClassIsChangedItsOwnWay) {
  load("");
  auto& factory = document_->getFactory();
  void* const memory = factory.getMemoryPool().allocateMemory(sizeof(HostObject));
  LibTarnManagedObject& changed = *new (memory) HostObject(
      &factory.getMemoryPool(), factory.getDistNameValidator(), factory.getIndexFactory(), factory);
  changed.setDistName("A-1");
  LibTarnManagedObject& values = made().setDistName("no name").setVersion("7").get();
  expectReason(changed.tryChange(named("A-1"), made().setVersion("8").get()), ChangeResult::NoMatch,
               "The 'managedObject' element with 'distName=A-1' doesn't match the mask");
  expectReason(changed.tryChange(named("A-1"), values), ChangeResult::InvalidName,
               "Invalid distinguished name: 'no name'");
  EXPECT_STREQ(changed.getVersion(), "7");
}

}  // namespace
