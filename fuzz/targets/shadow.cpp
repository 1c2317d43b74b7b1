// Host calls on a document, and merges of deltas that the same input describes, with a shadow of
// every index in standard containers. After each call every query returns what the shadow has.
// Walks that began before continue with the next entry of the shadow.

#include <fuzzer/FuzzedDataProvider.h>

#include <list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "../support/check.hpp"
#include "libtarn/libtarn.hpp"
#include "support/consistency.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::TarnMerge;
using libtarn::util::ManagedObjectBuilder;
using tarn_test::Indexes;

constexpr int MOST_STEPS = 200;
constexpr int STEPS_BETWEEN_CHECKS = 8;
constexpr unsigned OBJECTS = 40;
constexpr unsigned PARAMETERS = 70;  // more than an array of the index holds
constexpr unsigned CLASSES = 3;

std::string objectName(unsigned number) { return "A-" + std::to_string(number); }
std::string className(unsigned number) { return "C" + std::to_string(number); }
std::string parameterName(unsigned number) { return "p" + std::to_string(number); }

// The position of an object among those of its class.
using ClassPosition = std::pair<std::string, std::size_t>;

struct Object {
  std::string name;
  std::string className;
  std::size_t serial = 0;
  bool isIndexed = true;
  std::map<std::string, std::string> scalars;
  std::set<std::string> lists;
};

/// The expected content of the document.
class Shadow {
 public:
  std::map<LibTarnManagedObject*, Object> children;
  std::map<std::string, LibTarnManagedObject*> byName;
  std::map<ClassPosition, LibTarnManagedObject*> byClass;
  std::size_t nextSerial = 0;

  void index(LibTarnManagedObject* element) {
    Object& object = children.at(element);
    object.isIndexed = byName.emplace(object.name, element).second;
    if (!object.isIndexed) return;
    object.serial = nextSerial++;
    byClass.emplace(ClassPosition(object.className, object.serial), element);
  }

  void unindex(LibTarnManagedObject* element) {
    Object& object = children.at(element);
    if (!object.isIndexed) return;
    byName.erase(object.name);
    byClass.erase({object.className, object.serial});
    object.isIndexed = false;
  }

  // An object that claims the name gets it, if there is one. Of several, the document decides
  // which.
  void giveAway(const std::string& name, const LibTarnCmData& cmData) {
    LibTarnManagedObject* const found = cmData.getLibTarnManagedObject(name.c_str());
    bool isWanted = false;
    for (const auto& [element, object] : children) {
      isWanted = isWanted || (object.name == name && !object.isIndexed);
    }
    fuzz::check((found != nullptr) == isWanted, "a name that is free again is used again");
    if (!found) return;
    fuzz::check(children.count(found) == 1 && children.at(found).name == name, "by its owner");
    index(found);
  }
};

/// A walk during changes of the index, and the key of its next entry.
template <class Collection, class Key>
struct Walk {
  Collection collection;
  typename Collection::iterator position;
  std::optional<Key> next;
  bool isShown = false;
};

using NameWalk = Walk<indexation::ManagedObjectCollection, std::string>;
using ClassWalk = Walk<indexation::ManagedObjectCollection, ClassPosition>;

class Session {
 public:
  explicit Session(FuzzedDataProvider& input) : input_(input) {
    const bool heap = input.ConsumeBool();
    if (heap) {
      document_.emplace(new TarnDomDocument(nullptr, nullptr));
    } else {
      document_.emplace();
    }
    document_->parse(
        "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='actual'><header/></cmData>"
        "</tarn>",
        false);
    cmData_ = document_->getLibTarnCmData();
  }

  void run() {
    for (int step = 0; step < MOST_STEPS && input_.remaining_bytes() > 0; ++step) {
      act();
      checkObjects();
      if (step % STEPS_BETWEEN_CHECKS == 0) checkAllParameters();
    }
    checkAllParameters();
    const bool allIndexed = shadow_.byName.size() == shadow_.children.size();
    fuzz::checkNothing(
        tarn_test::brokenDocument(*document_, allIndexed ? Indexes::IN_STEP : Indexes::SOUND));
    fuzz::check((document_->validate() == 0) == allIndexed, "two objects of one name are reported");
  }

 private:
  unsigned number(unsigned end) { return input_.ConsumeIntegralInRange<unsigned>(0, end - 1); }

  LibTarnManagedObject* anyChild() {
    if (shadow_.children.empty()) return nullptr;
    auto it = shadow_.children.begin();
    std::advance(it, number(static_cast<unsigned>(shadow_.children.size())));
    return it->first;
  }

  void act() {
    switch (number(11)) {
      case 0:
      case 1:
        return add(objectName(number(OBJECTS)), className(number(CLASSES)));
      case 2:
        return addMany();
      case 3:
        return remove(objectName(number(OBJECTS)));
      case 4:
        return rename(objectName(number(OBJECTS)));
      case 5:
        return changeClass(className(number(CLASSES)));
      case 6:
        return addParameters();
      case 7:
        return removeParameter(parameterName(number(PARAMETERS)));
      case 8:
        return beginWalk();
      case 9:
        return goOn();
      default:
        return merge();
    }
  }

  void add(const std::string& name, const std::string& ofClass) {
    LibTarnManagedObject* const made =
        document_->getFactory().createLibTarnManagedObject(ofClass.c_str(), name.c_str(), nullptr);
    cmData_->addLibTarnManagedObject(*made);
    if (shadow_.byName.count(name) == 1) return;
    shadow_.children[made] = {name, ofClass, 0, true, {}, {}};
    shadow_.index(made);
  }

  void addMany() {
    const unsigned first = number(OBJECTS);
    const std::string ofClass = className(number(CLASSES));
    for (unsigned i = first; i < OBJECTS; ++i) add(objectName(i), ofClass);
  }

  void remove(const std::string& name) {
    const auto it = shadow_.byName.find(name);
    const bool isThere = it != shadow_.byName.end();
    fuzz::check(cmData_->removeLibTarnManagedObject(name.c_str()) == (isThere ? 0 : 2), "removal");
    if (isThere) forget(it->second);
  }

  void forget(LibTarnManagedObject* element) {
    const std::string name = shadow_.children.at(element).name;
    shadow_.unindex(element);
    shadow_.children.erase(element);
    shadow_.giveAway(name, *cmData_);
  }

  void rename(const std::string& name) {
    LibTarnManagedObject* const element = anyChild();
    if (!element) return;
    fuzz::check(element->setDistName(name.c_str()) == 0, "renaming");
    Object& object = shadow_.children.at(element);
    const std::string earlier = object.name;
    const bool wasIndexed = object.isIndexed;
    shadow_.unindex(element);
    object.name = name;
    shadow_.index(element);
    if (wasIndexed && earlier != name) shadow_.giveAway(earlier, *cmData_);
  }

  void changeClass(const std::string& ofClass) {
    LibTarnManagedObject* const element = anyChild();
    if (!element) return;
    auto& values = ManagedObjectBuilder(*document_).setClass(ofClass.c_str()).get();
    auto& mask = ManagedObjectBuilder(*document_).get();
    fuzz::check(element->change(mask, values), "changing");
    Object& object = shadow_.children.at(element);
    if (object.className == ofClass) return;
    const bool wasIndexed = object.isIndexed;
    shadow_.unindex(element);
    object.className = ofClass;
    if (wasIndexed) shadow_.index(element);
  }

  void addParameters() {
    LibTarnManagedObject* const element = anyChild();
    if (!element) return;
    Object& object = shadow_.children.at(element);
    auto& factory = document_->getFactory();
    const unsigned first = number(PARAMETERS);
    const unsigned count = input_.ConsumeBool() ? 1 : PARAMETERS;
    const bool lists = input_.ConsumeBool();
    for (unsigned i = first; i < PARAMETERS && i < first + count; ++i) {
      const std::string name = parameterName(i);
      const bool isNew =
          lists ? object.lists.insert(name).second : object.scalars.emplace(name, "v").second;
      const int result = lists ? element->addParameter(*factory.createList(name.c_str()))
                               : element->addParameter(*factory.createScalar(name.c_str(), "v"));
      fuzz::check(result == (isNew ? 0 : 1), "adding a parameter");
    }
  }

  void removeParameter(const std::string& name) {
    LibTarnManagedObject* const element = anyChild();
    if (!element) return;
    Object& object = shadow_.children.at(element);
    const bool list = input_.ConsumeBool();
    const bool isThere = list ? object.lists.erase(name) == 1 : object.scalars.erase(name) == 1;
    const int result =
        list ? element->removeListParameter(name) : element->removeScalarParameter(name);
    fuzz::check(result == (isThere ? 0 : 2), "removing a parameter");
  }

  // Walks

  void beginWalk() {
    if (input_.ConsumeBool()) {
      const auto all = cmData_->getLibTarnManagedObjects();
      if (shadow_.byName.empty()) return fuzz::check(all.empty(), "nothing to walk through");
      nameWalks_.push_back({all, all.begin(), shadow_.byName.begin()->first, false});
      return;
    }
    const std::string ofClass = className(number(CLASSES));
    const auto all = cmData_->getLibTarnManagedObjectsByClass(ofClass);
    const auto first = shadow_.byClass.lower_bound({ofClass, 0});
    const bool isThere = first != shadow_.byClass.end() && first->first.first == ofClass;
    fuzz::check(all.empty() != isThere, "a class to walk through");
    if (!isThere) return;
    classWalks_.push_back({all, all.begin(), first->first, false});
    classEnds_.push_back(shadow_.nextSerial);
  }

  void goOn() {
    for (NameWalk& walk : nameWalks_) step(walk, shadow_.byName, shadow_.byName.end());
    for (std::size_t i = 0; i < classWalks_.size(); ++i) {
      ClassWalk& walk = classWalks_[i];
      if (!walk.next) continue;
      step(walk, shadow_.byClass, shadow_.byClass.lower_bound({walk.next->first, classEnds_[i]}));
    }
  }

  // Reads an entry, or steps on from one that was read: the index may change between the two.
  template <class Walk, class Map>
  static void step(Walk& walk, const Map& map, typename Map::const_iterator end) {
    if (!walk.next) return fuzz::check(walk.position == walk.collection.end(), "a walk ends once");
    if (walk.isShown) ++walk.position;
    const auto expected = walk.isShown ? map.upper_bound(*walk.next) : map.lower_bound(*walk.next);
    const bool isAtEnd = expected == end || (end != map.end() && !(expected->first < end->first));
    fuzz::check((walk.position == walk.collection.end()) == isAtEnd, "the end of a walk");
    if (isAtEnd) {
      walk.next.reset();
      walk.position = walk.collection.end();
      return;
    }
    walk.next = expected->first;
    walk.isShown = !walk.isShown;
    if (walk.isShown) fuzz::check(*walk.position == expected->second, "what a walk meets");
  }

  // Merging

  struct DeltaObject {
    std::string operation;
    std::string ofClass;
    std::string value;
    bool hasList;
  };

  void merge() {
    std::map<std::string, DeltaObject> objects;
    for (unsigned count = number(6); count > 0; --count) {
      static const char* const OPERATIONS[] = {"create", "update", "delete", "auto"};
      objects[objectName(number(OBJECTS))] = {OPERATIONS[number(4)], className(number(CLASSES)),
                                              std::to_string(number(9)), input_.ConsumeBool()};
    }
    std::string text = "<tarn><cmData type='plan'>";
    for (const auto& [name, object] : objects) {
      text += "<managedObject class='" + object.ofClass + "' distName='" + name + "' operation='" +
              object.operation + "'><p name='p1'>" + object.value + "</p>" +
              (object.hasList ? "<list name='p2'/>" : "") + "</managedObject>";
    }
    LibTarnDocument delta;
    fuzz::check(delta.parse((text + "</cmData></tarn>").c_str(), false) == 0, "a delta loads");
    bool fits = true;
    for (const auto& [name, object] : objects) {
      const bool isThere = shadow_.byName.count(name) == 1;
      if (object.operation == "create" && isThere) fits = false;
      if ((object.operation == "update" || object.operation == "delete") && !isThere) fits = false;
    }
    fuzz::check(TarnMerge(*document_).mergeDocument(delta) == fits, "a merge");
    if (!fits) return;
    for (const auto& [name, object] : objects) {
      if (object.operation != "delete") apply(name, object);
    }
    for (const auto& [name, object] : objects) {
      if (object.operation == "delete") forget(shadow_.byName.at(name));
    }
  }

  void apply(const std::string& name, const DeltaObject& object) {
    if (shadow_.byName.count(name) == 0) {
      LibTarnManagedObject* const made = cmData_->getLibTarnManagedObject(name.c_str());
      fuzz::check(made != nullptr, "a created object");
      shadow_.children[made] = {name, object.ofClass, 0, true, {}, {}};
      shadow_.index(made);
    }
    Object& target = shadow_.children.at(shadow_.byName.at(name));
    target.scalars["p1"] = object.value;
    if (object.hasList) target.lists.insert("p2");
  }

  // Queries

  void checkObjects() const {
    fuzz::check(cmData_->getManagedObjectNumber() == shadow_.byName.size(), "number of objects");
    for (unsigned i = 0; i < OBJECTS; ++i) {
      const std::string name = objectName(i);
      const auto it = shadow_.byName.find(name);
      LibTarnManagedObject* const expected = it == shadow_.byName.end() ? nullptr : it->second;
      fuzz::check(cmData_->getLibTarnManagedObject(name.c_str()) == expected, "look-up of a name");
    }
    auto byName = shadow_.byName.begin();
    for (LibTarnManagedObject* element : cmData_->getLibTarnManagedObjects()) {
      fuzz::check(byName != shadow_.byName.end() && byName->second == element, "order of names");
      ++byName;
    }
    auto byClass = shadow_.byClass.begin();
    for (unsigned i = 0; i < CLASSES; ++i) {
      for (auto* element : cmData_->getLibTarnManagedObjectsByClass(className(i))) {
        fuzz::check(byClass != shadow_.byClass.end() && byClass->second == element,
                    "order of a class");
        ++byClass;
      }
    }
  }

  void checkAllParameters() const {
    for (const auto& [element, object] : shadow_.children) checkParameters(*element, object);
  }

  static void checkParameters(const LibTarnManagedObject& element, const Object& object) {
    auto scalar = object.scalars.begin();
    for (const auto& entry : element.getScalarParameters()) {
      fuzz::check(scalar != object.scalars.end() && scalar->first == entry.first &&
                      scalar->second == entry.second->getValue(),
                  "order of parameters");
      ++scalar;
    }
    fuzz::check(scalar == object.scalars.end(), "number of parameters");
    auto list = object.lists.begin();
    for (const auto& entry : element.getListParameters()) {
      fuzz::check(list != object.lists.end() && *list == entry.first, "order of lists");
      ++list;
    }
    fuzz::check(list == object.lists.end(), "number of lists");
  }

  FuzzedDataProvider& input_;
  std::optional<LibTarnDocument> document_;
  LibTarnCmData* cmData_ = nullptr;
  Shadow shadow_;
  std::list<NameWalk> nameWalks_;
  std::vector<ClassWalk> classWalks_;
  std::vector<std::size_t> classEnds_;  // what comes later is not met
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  Session(input).run();
  return 0;
}
