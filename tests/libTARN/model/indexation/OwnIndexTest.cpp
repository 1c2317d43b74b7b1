// Indexes of a host for objects and parameters, in standard containers, beside the library's.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <stdexcept>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/indexation/ITarnUniqueAndNonUniqueMultiIndex.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"
#include "support/CapturedLog.hpp"
#include "support/documents.hpp"

namespace {
using tarn_test::documentText;

using namespace libtarn::model;
using namespace libtarn::model::indexation;

const char* textOf(const char* text) { return text ? text : ""; }

// Sorted by name; the order of insertion decides between objects of a class.
class ObjectVector : public ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject> {
 public:
  using Entry = ManagedObjectEntry;

  bool add(LibTarnManagedObject* object) override {
    if (addsUntilFault > 0 && --addsUntilFault == 0) throw std::runtime_error("full");
    const char* const name = textOf(object->getDistName().getText());
    if (findUniqueElement(name)) return false;
    entries_.push_back({name, object, serial_++});
    std::sort(entries_.begin(), entries_.end(),
              [](const Entry& a, const Entry& b) { return std::strcmp(a.key, b.key) < 0; });
    return true;
  }
  bool remove(LibTarnManagedObject* object) override {
    const auto it = find(textOf(object->getDistName().getText()));
    if (it == entries_.end()) return false;
    entries_.erase(it);
    return true;
  }
  LibTarnManagedObject* findUniqueElement(const char* key) const override {
    const auto it = const_cast<ObjectVector*>(this)->find(key);
    return it == entries_.end() ? nullptr : it->object;
  }
  ManagedObjectCollection getNonUniqueCollection(const char* key) const override {
    members_.clear();
    for (const Entry& entry : entries_) {
      const char* const name = textOf(entry.object->getClass());
      if (std::strcmp(name, key) == 0) members_.push_back({name, entry.object, entry.serial});
    }
    std::sort(members_.begin(), members_.end(),
              [](const Entry& a, const Entry& b) { return a.serial < b.serial; });
    return collectionOf(members_, membersRun_);
  }
  ManagedObjectCollection getCollection() const override { return collectionOf(entries_, run_); }
  std::size_t size() const override { return entries_.size(); }
  void clear() override { entries_.clear(); }

  int addsUntilFault = 0;  // 0: no fault

 private:
  std::vector<Entry>::iterator find(const char* key) {
    return std::find_if(entries_.begin(), entries_.end(),
                        [key](const Entry& each) { return std::strcmp(each.key, key) == 0; });
  }
  static ManagedObjectCollection collectionOf(const std::vector<Entry>& entries,
                                              EntryRun<Entry>& run) {
    run = {entries.data(), entries.data() + entries.size(), nullptr};
    return ManagedObjectCollection(run);
  }

  std::vector<Entry> entries_;
  mutable std::vector<Entry> members_;
  mutable EntryRun<Entry> run_{};
  mutable EntryRun<Entry> membersRun_{};
  std::size_t serial_ = 0;
};

class OwnFactory : public TarnIndexFactory {
 public:
  using TarnIndexFactory::TarnIndexFactory;

  ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>* createUniqueAndNonUniqueMultiIndex()
      const override {
    return &indexes_.emplace_back();
  }
  ObjectVector& last() { return indexes_.back(); }

 private:
  mutable std::deque<ObjectVector> indexes_;
};

// The results of load, queries, edits, merge and validation.
std::vector<std::string> answersOf(LibTarnDocument& document) {
  std::vector<std::string> answers;
  const auto keep = [&](const auto& answer) { answers.push_back(std::to_string(answer)); };
  const auto keepNames = [&](const ManagedObjectCollection& collection) {
    for (const auto* object : collection) answers.emplace_back(object->getDistName().getText());
  };
  keep(document.parse(documentText("<managedObject class='C' distName='B-1'/>"
                                   "<managedObject class='D' distName='A-2'><p name='x'>1</p>"
                                   "</managedObject><managedObject class='C' distName='A-1'/>")
                          .c_str(),
                      true));
  LibTarnCmData& cmData = *document.getLibTarnCmData();
  auto& factory = document.getFactory();
  keepNames(cmData.getLibTarnManagedObjects());
  keepNames(cmData.getLibTarnManagedObjectsByClass("C"));
  cmData.addLibTarnManagedObject(*factory.createLibTarnManagedObject("C", "A-0", nullptr));
  cmData.addLibTarnManagedObject(*factory.createLibTarnManagedObject("C", "B-1", nullptr));
  keep(cmData.getLibTarnManagedObject("A-1")->setDistName("C-9"));
  keep(cmData.removeLibTarnManagedObject("B-1"));
  keep(cmData.removeLibTarnManagedObject("B-1"));
  LibTarnDocument delta;
  delta.parse(
      documentText("<managedObject class='E' distName='E-1'/>"
                   "<managedObject class='D' distName='A-2'><p name='x'>2</p></managedObject>")
          .c_str(),
      false);
  keep(libtarn::editor::TarnMerge(document).mergeDocument(delta));
  keep(document.validate());
  keepNames(cmData.getLibTarnManagedObjectsByClass("C"));
  dynamic_cast<TarnDomElement&>(*cmData.getLibTarnManagedObject("E-1")).removeAttribute("class");
  keep(document.validate());
  std::string printed;
  libtarn::util::dumpTarnDocument(document, printed);
  answers.push_back(printed);
  keep(document.parse(documentText("<managedObject class='C' distName='B-1'/>"
                                   "<managedObject class='C' distName='B-1'/>")
                          .c_str(),
                      false));
  answers.push_back(document.getDiagnostic().message);
  return answers;
}

TEST(OwnIndexTest, DocumentAnswersAsWithTheIndexesOfTheLibrary) {
  const tarn_test::CapturedLog log;
  libDomXml::DomDocument memory(false);
  OwnFactory own(memory);
  LibTarnDocument withOwn(new TarnDomDocument(nullptr, &own));
  LibTarnDocument usual;
  EXPECT_EQ(answersOf(withOwn), answersOf(usual));
}

// The second add() is for the object that gets the name back.
TEST(OwnIndexTest, ChangeIsMadeWhollyWhenANameThatItFreesCannotBeIndexed) {
  const tarn_test::CapturedLog log;
  libDomXml::DomDocument memory(false);
  OwnFactory own(memory);
  LibTarnDocument document(new TarnDomDocument(nullptr, &own));
  ASSERT_EQ(document.parse(documentText("<managedObject class='C' distName='A-1'/>"
                                        "<managedObject class='C' distName='A-2'/>")
                               .c_str(),
                           false),
            0);
  LibTarnManagedObject& object = *document.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  document.getLibTarnCmData()->getLibTarnManagedObject("A-2")->setDistName("A-1");
  auto& factory = document.getFactory();
  LibTarnManagedObject& mask = *factory.createLibTarnManagedObject("C", "A-1", "#");
  LibTarnManagedObject& values = *factory.createLibTarnManagedObject("D", "B-1", "2");
  values.addParameter(*factory.createScalar("a", "1"));
  own.last().addsUntilFault = 2;
  EXPECT_TRUE(object.change(mask, values));
  EXPECT_EQ(own.last().addsUntilFault, 0);
  EXPECT_EQ(document.getLibTarnCmData()->getLibTarnManagedObject("B-1"), &object);
  EXPECT_TRUE(object.hasScalarParameter("a"));
}

}  // namespace
