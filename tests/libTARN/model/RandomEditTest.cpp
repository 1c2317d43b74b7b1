// Random edits on a document, compared after every step with a reference model in standard
// containers.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "support/CapturedLog.hpp"
#include "support/documents.hpp"
#include "support/treeDump.hpp"

namespace {
using tarn_test::namesOf;

using namespace libtarn::model;
using Names = std::vector<std::string>;

struct ModelObject {
  std::string className;
  std::string version;
  std::vector<std::pair<std::string, std::string>> parameters;  // in the order of the children

  auto find(const std::string& name) {
    return std::find_if(parameters.begin(), parameters.end(),
                        [&](const auto& parameter) { return parameter.first == name; });
  }
};

struct Model {
  std::vector<std::string> order;  // names in the order of the children
  std::map<std::string, ModelObject> objects;
};

class RandomEdit {
 public:
  explicit RandomEdit(unsigned seed) : random_(seed) {
    EXPECT_EQ(document_.parse("<tarn><cmData type='plan'/></tarn>", false), 0);
    cmData_ = document_.getLibTarnCmData();
  }

  void step() {
    const std::string name = "A-" + std::to_string(pick(12));
    switch (pick(8)) {
      case 0:
      case 1:
        return add(name);
      case 2:
        return remove(name);
      case 3:
        return rename(name, "A-" + std::to_string(pick(12)));
      case 4:
        return changeClass(name, "C" + std::to_string(pick(3)));
      case 5:
      case 6:
        return setParameter(name, std::string(1, static_cast<char>('a' + pick(5))));
      default:
        return removeParameter(name, std::string(1, static_cast<char>('a' + pick(5))));
    }
  }

  void check() {
    ASSERT_EQ(cmData_->getManagedObjectNumber(), model_.objects.size());
    Names sorted;
    std::map<std::string, Names> byClass;
    for (const auto& [name, object] : model_.objects) {
      sorted.push_back(name);
      byClass[object.className].push_back(name);
      checkObject(name, object);
    }
    ASSERT_EQ(namesOf(cmData_->getLibTarnManagedObjects()), sorted);
    for (int i = 0; i < 3; ++i) {
      const std::string className = "C" + std::to_string(i);
      Names found = namesOf(cmData_->getLibTarnManagedObjectsByClass(className));
      std::sort(found.begin(), found.end());
      ASSERT_EQ(found, byClass[className]);
    }
    Names children;
    const auto* child = cmData_->getFirstChildElement("managedObject");
    for (; child; child = child->getNextSiblingElement()) {
      children.emplace_back(
          dynamic_cast<const LibTarnManagedObject*>(child)->getDistName().getText());
    }
    ASSERT_EQ(children, model_.order);
  }

  void checkPrintedForm() {
    std::string text;
    libtarn::util::dumpTarnDocument(document_, text);
    LibTarnDocument again;
    ASSERT_EQ(again.parse(text.c_str(), false), 0);
    std::string second;
    libtarn::util::dumpTarnDocument(again, second);
    ASSERT_EQ(second, text);
    ASSERT_EQ(namesOf(again.getLibTarnCmData()->getLibTarnManagedObjects()),
              namesOf(cmData_->getLibTarnManagedObjects()));
  }

 private:
  unsigned pick(unsigned count) { return static_cast<unsigned>(random_() % count); }

  void checkObject(const std::string& name, const ModelObject& expected) {
    const auto* const object = dynamic_cast<const LibTarnManagedObjectImp*>(
        cmData_->getLibTarnManagedObject(name.c_str()));
    ASSERT_NE(object, nullptr) << name;
    ASSERT_EQ(object->getClass(), expected.className);
    ASSERT_EQ(object->getVersion() ? object->getVersion() : "", expected.version);
    std::string tree = "{";
    Names names;
    for (const auto& [key, value] : expected.parameters) {
      tree += std::string(tree.size() > 1 ? " " : "") + "p(name=" + key + ")\"" + value + "\"";
      names.push_back(key);
      ASSERT_STREQ(object->getScalarParameter(key.c_str())->getValue(), value.c_str());
    }
    const std::string dump = tarn_test::dump(*object);
    ASSERT_EQ(dump.find('{') == std::string::npos ? "{" : dump.substr(dump.find('{')),
              tree + (tree.size() > 1 ? "}" : ""));
    std::sort(names.begin(), names.end());
    Names indexed;
    for (const auto& entry : object->getScalarParameters()) indexed.emplace_back(entry.first);
    ASSERT_EQ(indexed, names);
  }

  void add(const std::string& name) {
    const std::string className = "C" + std::to_string(pick(3));
    cmData_->addLibTarnManagedObject(*document_.getFactory().createLibTarnManagedObject(
        className.c_str(), name.c_str(), nullptr));
    if (model_.objects.emplace(name, ModelObject{className, "", {}}).second) {
      model_.order.push_back(name);
    }
  }

  void remove(const std::string& name) {
    const bool known = model_.objects.erase(name) == 1;
    ASSERT_EQ(cmData_->removeLibTarnManagedObject(name.c_str()), known ? 0 : 2);
    if (known) model_.order.erase(std::find(model_.order.begin(), model_.order.end(), name));
  }

  void rename(const std::string& from, const std::string& to) {
    LibTarnManagedObject* const object = cmData_->getLibTarnManagedObject(from.c_str());
    if (!object || (from != to && model_.objects.count(to) == 1)) return;
    ASSERT_EQ(object->setDistName(to.c_str()), 0);
    auto node = model_.objects.extract(from);
    node.key() = to;
    model_.objects.insert(std::move(node));
    std::replace(model_.order.begin(), model_.order.end(), from, to);
  }

  // Through change(), with a mask that selects by name.
  void changeClass(const std::string& name, const std::string& className) {
    LibTarnManagedObject* const object = cmData_->getLibTarnManagedObject(name.c_str());
    if (!object) return;
    const std::string version = std::to_string(pick(5));
    auto& factory = document_.getFactory();
    LibTarnManagedObject* const mask = factory.createLibTarnManagedObject("#", name.c_str(), "#");
    LibTarnManagedObject* const values =
        factory.createLibTarnManagedObject(className.c_str(), name.c_str(), version.c_str());
    values->addParameter(*factory.createScalar("c", "changed"));
    values->addParameter(*factory.createScalar("b", "changed"));
    ASSERT_TRUE(object->change(*mask, *values));
    ModelObject& expected = model_.objects[name];
    expected.className = className;
    expected.version = version;
    for (const char* key : {"b", "c"}) {
      const auto it = expected.find(key);
      if (it != expected.parameters.end()) expected.parameters.erase(it);
    }
    expected.parameters.emplace_back("b", "changed");
    expected.parameters.emplace_back("c", "changed");
  }

  void setParameter(const std::string& name, const std::string& key) {
    LibTarnManagedObject* const object = cmData_->getLibTarnManagedObject(name.c_str());
    if (!object) return;
    const std::string value = std::to_string(1 + pick(1000));
    ModelObject& expected = model_.objects[name];
    const auto it = expected.find(key);
    Scalar* const fresh = document_.getFactory().createScalar(key.c_str(), value.c_str());
    ASSERT_EQ(object->addParameter(*fresh), it == expected.parameters.end() ? 0 : 1);
    if (it == expected.parameters.end()) {
      expected.parameters.emplace_back(key, value);
    } else {
      object->getScalarParameter(key.c_str())->setValue(value.c_str());
      it->second = value;
    }
  }

  void removeParameter(const std::string& name, const std::string& key) {
    LibTarnManagedObject* const object = cmData_->getLibTarnManagedObject(name.c_str());
    if (!object) return;
    ModelObject& expected = model_.objects[name];
    const auto it = expected.find(key);
    ASSERT_EQ(object->removeScalarParameter(key), it == expected.parameters.end() ? 2 : 0);
    if (it != expected.parameters.end()) expected.parameters.erase(it);
  }

  std::mt19937 random_;
  LibTarnDocument document_;
  LibTarnCmData* cmData_ = nullptr;
  Model model_;
};

TEST(RandomEditTest, DocumentAgreesWithAReferenceModelAfterEveryStep) {
  for (unsigned seed = 0; seed < 40; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    tarn_test::CapturedLog log;
    RandomEdit edit(seed);
    for (int step = 0; step < 250; ++step) {
      edit.step();
      edit.check();
      if (::testing::Test::HasFatalFailure()) return;
    }
    edit.checkPrintedForm();
    EXPECT_TRUE(log.messages("ERROR").empty());
  }
}

TEST(RandomEditTest, HundredsOfThousandsOfAddsInRandomOrderAreAllFound) {
  constexpr int count = 200000;
  std::vector<int> numbers(count);
  for (int i = 0; i < count; ++i) numbers[static_cast<std::size_t>(i)] = i;
  std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
  LibTarnDocument document;
  auto& factory = document.getFactory();
  LibTarnCmData* const cmData = factory.createLibTarnCmData(LibTarnCmData::Type::PLAN);
  LibTarnManagedObject* const wide = factory.createLibTarnManagedObject("C", "W-1", nullptr);
  cmData->addLibTarnManagedObject(*wide);
  for (const int number : numbers) {
    const std::string name = std::to_string(number);
    ASSERT_EQ(wide->addParameter(*factory.createScalar(name.c_str(), name.c_str())), 0);
    cmData->addLibTarnManagedObject(
        *factory.createLibTarnManagedObject("C", ("A-" + name).c_str(), nullptr));
  }
  EXPECT_EQ(cmData->getManagedObjectNumber(), 1U + count);
  for (const int number : numbers) {
    const std::string name = std::to_string(number);
    ASSERT_STREQ(wide->getScalarParameter(name.c_str())->getValue(), name.c_str());
    ASSERT_TRUE(cmData->hasLibTarnManagedObject(("A-" + name).c_str()));
  }
}

}  // namespace
