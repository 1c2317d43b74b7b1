// Edits of two documents. The input selects among all operations of the element interfaces, the
// factory, the indexes and the merge that a host may call at that point. After each step both
// documents must be consistent.

#include <fuzzer/FuzzedDataProvider.h>

#include <deque>
#include <map>
#include <vector>

#include "../support/check.hpp"
#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"
#include "support/consistency.hpp"

namespace {

using namespace libtarn::model;
using libtarn::editor::TarnMerge;
using libtarn::util::ManagedObjectBuilder;
using libtarn::util::TarnFactory;
using tarn_test::Indexes;
using Operation = LibTarnManagedObject::Operation;

constexpr int MOST_STEPS = 400;

const TarnDomElement& elementOf(const IElement& element) {
  return dynamic_cast<const TarnDomElement&>(element);
}

// A unique index of the host, on top of std::map.
template <class Element>
struct IndexBesideMap {
  indexation::ITarnUniqueIndex<Element>* index;
  std::map<std::string, Element*> map;

  void add(Element& element) {
    const bool added = map.emplace(element.getId(), &element).second;
    fuzz::check(index->add(&element) == added, "add to an index");
  }
  void remove(Element& element) {
    const bool removed = map.erase(element.getId()) == 1;
    fuzz::check(index->remove(&element) == removed, "remove from an index");
  }
  void removeByName(const std::string& name) {
    const bool removed = map.erase(name) == 1;
    fuzz::check(index->remove(name.c_str()) == removed, "remove by name from an index");
  }
  void check() const {
    fuzz::check(index->size() == map.size(), "size of an index");
    auto expected = map.begin();
    for (const auto& entry : index->getCollection()) {
      fuzz::check(expected != map.end() && expected->first == entry.first &&
                      expected->second == entry.second && index->find(entry.first) == entry.second,
                  "entries of an index");
      ++expected;
    }
  }
};

// A document and all elements that were ever taken from it, which live as long.
struct Side {
  LibTarnDocument document;
  Indexes indexes = Indexes::IN_STEP;
  std::vector<LibTarnCmData*> cmDatas;
  std::vector<LibTarnHeader*> headers;
  std::vector<Log*> logs;
  std::vector<LibTarnManagedObject*> objects;
  std::vector<Scalar*> scalars;
  std::vector<List*> lists;
  std::vector<Structure*> items;
  std::vector<LibTarnExtension*> extensions;

  indexation::TarnIndexFactory indexFactory{*document.getItsTarnDomDocument()};
  IndexBesideMap<Scalar> scalarIndex{indexFactory.createUniqueScalarNameTarnIndex(), {}};
  IndexBesideMap<List> listIndex{indexFactory.createUniqueIndexForList(), {}};

  TarnFactory& factory() { return document.getFactory(); }

  // Elements that the target has not seen before.
  void collect() {
    for (auto* cmData = document.getLibTarnCmData(); cmData;
         cmData = cmData->getNextSiblingElement()) {
      note(cmDatas, cmData);
      if (auto* const header = cmData->getLibTarnHeader()) {
        note(headers, header);
        for (auto* log = header->getLogs(); log; log = log->getNextSiblingElement()) {
          note(logs, log);
        }
      }
      for (LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) collect(*object);
    }
  }

  void collect(LibTarnManagedObject& object) {
    note(objects, &object);
    for (const auto& entry : object.getScalarParameters()) note(scalars, entry.second);
    for (const auto& entry : object.getListParameters()) {
      note(lists, entry.second);
      for (auto* value = entry.second->getScalarValues(); value;
           value = value->getNextSiblingElement()) {
        note(scalars, value);
      }
      for (auto* item = entry.second->getStructuredValues(); item;
           item = item->getNextSiblingElement()) {
        note(items, item);
        for (const auto& component : item->getComponents()) note(scalars, component.second);
      }
    }
    for (auto* extension = object.getExtensions(); extension;
         extension = extension->getNextSiblingElement()) {
      note(extensions, extension);
      for (auto* parameter = extension->getParameters(); parameter;
           parameter = parameter->getNextSiblingElement()) {
        note(scalars, parameter);
      }
    }
  }

  void check() {
    fuzz::checkNothing(tarn_test::brokenDocument(document, indexes));
    scalarIndex.check();
    listIndex.check();
  }

  // Elements that are not, or no longer, in the tree.
  void checkDetached() {
    checkDetached(cmDatas);
    checkDetached(headers);
    checkDetached(logs);
    checkDetached(objects);
    checkDetached(scalars);
    checkDetached(lists);
    checkDetached(items);
    checkDetached(extensions);
  }

 private:
  template <class Element>
  static void note(std::vector<Element*>& elements, Element* element) {
    for (const Element* known : elements) {
      if (known == element) return;
    }
    elements.push_back(element);
  }

  template <class Element>
  void checkDetached(const std::vector<Element*>& elements) {
    for (const Element* element : elements) {
      const TarnDomElement& node = elementOf(*element);
      if (node.getParent()) continue;
      fuzz::checkNothing(tarn_test::brokenTree(node, document.getItsTarnDomDocument()));
    }
  }
};

class Session {
 public:
  Session(const std::uint8_t* data, std::size_t size) : input_(data, size) {
    for (Side& side : sides_) {
      if (input_.ConsumeBool()) parse(side);
    }
  }

  void run() {
    for (int step = 0; step < MOST_STEPS && input_.remaining_bytes() > 0; ++step) {
      Side& side = sides_[input_.ConsumeIntegralInRange<int>(0, 1)];
      try {
        edit(side, other(side));
      } catch (const exceptions::ModelException&) {
        // A clone, or an operation that clones, of an element that breaks a rule of the model.
      }
      for (Side& each : sides_) each.check();
    }
    for (Side& side : sides_) side.checkDetached();
  }

 private:
  Side& other(Side& side) { return sides_[&side == &sides_[0] ? 1 : 0]; }

  // Arguments

  std::string text() {
    static const char* const TEXTS[] = {"",       "#",       "_-_",  "a",    "b",     "c",
                                        "name",   "A-1",     "A-2",  "A-10", "B-",    "-1",
                                        "ZNT-1/", "A-1/B-2", "plan", "auto", "&<>'\""};
    const auto choice = input_.ConsumeIntegral<std::uint8_t>();
    if (choice < 230) return TEXTS[choice % std::size(TEXTS)];
    return input_.ConsumeRandomLengthString(300);
  }

  // Null now and then.
  const char* textOrNull() {
    kept_.push_back(text());
    return input_.ConsumeIntegralInRange<int>(0, 7) == 0 ? nullptr : kept_.back().c_str();
  }

  Operation operation() {
    static const Operation ALL[] = {Operation::CREATE, Operation::DELETE, Operation::UPDATE,
                                    Operation::AUTO};
    return ALL[input_.ConsumeIntegralInRange<int>(0, 3)];
  }

  template <class Element>
  Element* pick(const std::vector<Element*>& elements) {
    if (elements.empty()) return nullptr;
    return elements[input_.ConsumeIntegralInRange<std::size_t>(0, elements.size() - 1)];
  }

  // Elements that may be linked.
  template <class Element>
  Element* pickDetached(const std::vector<Element*>& elements) {
    Element* const element = pick(elements);
    return element && !elementOf(*element).getParent() ? element : nullptr;
  }

  void parse(Side& side) {
    const std::string source = input_.ConsumeRandomLengthString(2000);
    // Elements of earlier texts stay available to later steps.
    if (side.document.parse(source.c_str(), input_.ConsumeBool()) != 0) {
      side.indexes = Indexes::SOUND;
    }
    side.collect();
  }

  // One step

  void edit(Side& side, Side& elsewhere) {
    switch (input_.ConsumeIntegralInRange<int>(0, 11)) {
      case 0:
      case 1:
        return make(side);
      case 2:
        return onDocument(side);
      case 3:
      case 4:
        return onCmData(side);
      case 5:
      case 6:
        return onObject(side, elsewhere);
      case 7:
        return onList(side);
      case 8:
        return onExtension(side);
      case 9:
        return onHeader(side, elsewhere);
      case 10:
        return onAny(side);
      default:
        return merge(side, elsewhere);
    }
  }

  void make(Side& side) {
    TarnFactory& factory = side.factory();
    switch (input_.ConsumeIntegralInRange<int>(0, 10)) {
      case 0:
        side.cmDatas.push_back(factory.createLibTarnCmData(LibTarnCmData::Type::ACTUAL));
        break;
      case 1:
        side.headers.push_back(factory.createLibTarnHeader());
        break;
      case 2:
        noteObject(
            side, factory.createLibTarnManagedObject(text().c_str(), text().c_str(), textOrNull()));
        break;
      case 3:
        noteObject(side, factory.createLibTarnManagedObject(text().c_str(), text().c_str(),
                                                            operation(), textOrNull()));
        break;
      case 4: {
        const std::string name = text();
        noteObject(side,
                   factory.createLibTarnManagedObject(
                       text().c_str(), DistinguishedName(name.c_str()), operation(), textOrNull()));
        break;
      }
      case 5:
        noteObject(side, &ManagedObjectBuilder(side.document)
                              .setClass(text().c_str())
                              .setDistName(text().c_str())
                              .setVersion(text().c_str())
                              .setOperation(operation())
                              .get());
        break;
      case 6:
        side.lists.push_back(factory.createList(text().c_str()));
        break;
      case 7:
        side.items.push_back(factory.createStructure());
        break;
      case 8:
        side.extensions.push_back(factory.createLibTarnExtension(text().c_str()));
        break;
      case 9:
        side.logs.push_back(factory.createLog(text().c_str(), textOrNull(), textOrNull()));
        break;
      default:
        side.scalars.push_back(factory.createScalar(textOrNull(), textOrNull()));
        break;
    }
  }

  static void noteObject(Side& side, LibTarnManagedObject* object) {
    if (object) side.objects.push_back(object);
  }

  void onDocument(Side& side) {
    LibTarnDocument& document = side.document;
    switch (input_.ConsumeIntegralInRange<int>(0, 6)) {
      case 0:
        if (auto* const cmData = pickDetached(side.cmDatas)) document.addLibTarnCmData(*cmData);
        break;
      case 1:
        if (const auto* const mask = pick(side.objects)) document.getMOsMatchingMask(*mask);
        break;
      case 2:
        if (const auto* const mask = pick(side.objects)) {
          // Two names may become equal.
          side.indexes = Indexes::SOUND;
          document.setChangesToMOs(*mask, *pick(side.objects));
          side.collect();
        }
        break;
      case 3:
        document.validate();
        break;
      case 4: {
        std::string printed;
        libtarn::util::dumpTarnDocument(document, printed);
        LibTarnDocument again;
        again.parse(printed.c_str(), true);
        fuzz::checkNothing(tarn_test::brokenDocument(again, Indexes::SOUND));
        break;
      }
      case 5:
        parse(side);
        break;
      default:
        side.collect();
        break;
    }
  }

  void onCmData(Side& side) {
    LibTarnCmData* const cmData = pick(side.cmDatas);
    if (!cmData) return;
    const std::string name = text();
    switch (input_.ConsumeIntegralInRange<int>(0, 9)) {
      case 0:
        cmData->setType(LibTarnCmData::Type::PLAN);
        break;
      case 1:
        if (auto* const header = pick(side.headers)) {
          const auto* const parent = elementOf(*header).getParent();
          if (!parent || parent == &elementOf(*cmData)) cmData->setLibTarnHeader(*header);
        }
        break;
      case 2:
        if (auto* const object = cmData->getLibTarnManagedObject(name.c_str())) {
          // An object that had been unlinked by itself and then renamed is found by its former
          // name.
          fuzz::check(side.indexes == Indexes::SOUND ||
                          cmData->hasLibTarnManagedObject(object->getDistName()),
                      "has its objects");
        }
        break;
      case 3:
        // An object that is not a child of the index's cmData had been unlinked by itself.
        if (cmData->removeLibTarnManagedObject(name.c_str()) == 1) {
          fuzz::check(side.indexes == Indexes::SOUND, "indexed objects are children");
        }
        break;
      case 4:
        for (const auto* object : cmData->getLibTarnManagedObjectsByClass(name)) {
          fuzz::check(side.indexes == Indexes::SOUND || object->getClass() == name ||
                          (!object->getClass() && name.empty()),
                      "objects of a class");
        }
        break;
      case 5:
        cmData->getNextSiblingElement();
        cmData->getFirstChildElement(textOrNull());
        cmData->getId();
        break;
      case 6:
        if (const auto* const known = pick(side.objects)) {
          cmData->removeLibTarnManagedObject(known->getDistName());
        }
        break;
      default:
        if (auto* const object = pickDetached(side.objects)) add(side, *cmData, *object);
        break;
    }
  }

  // If the index of another cmData still holds the object, two indexes find it from now on.
  void add(Side& side, LibTarnCmData& cmData, LibTarnManagedObject& object) {
    const std::size_t before = cmData.getManagedObjectNumber();
    const bool taken = cmData.hasLibTarnManagedObject(object.getDistName());
    cmData.addLibTarnManagedObject(object);
    fuzz::check(cmData.getManagedObjectNumber() == before + (taken ? 0 : 1), "object added");
    fuzz::check(taken || cmData.getLibTarnManagedObject(object.getDistName()) == &object ||
                    side.indexes == Indexes::SOUND,
                "added object found");
  }

  void onObject(Side& side, Side& elsewhere) {
    LibTarnManagedObject* const object = pick(side.objects);
    if (!object) return;
    const std::string name = text();
    switch (input_.ConsumeIntegralInRange<int>(0, 15)) {
      case 0:
        object->setOperation(operation());
        break;
      case 1:
        object->clearOperation();
        break;
      case 2:
        object->match(*pick(input_.ConsumeBool() && !elsewhere.objects.empty() ? elsewhere.objects
                                                                               : side.objects));
        break;
      case 3: {
        side.indexes = Indexes::SOUND;  // the new name may be another's
        const auto& from = elsewhere.objects.empty() ? side.objects : elsewhere.objects;
        object->change(*pick(side.objects), *pick(from));
        side.collect(*object);
        break;
      }
      case 4:
        object->setVersion(name);
        break;
      case 5:
        side.indexes = Indexes::SOUND;
        object->setDistName(textOrNull());
        break;
      case 6: {
        const bool has = object->hasScalarParameter(name);
        const bool found = object->removeScalarParameter(name) != 2;
        fuzz::check(found == has && !object->hasScalarParameter(name), "parameter removed");
        break;
      }
      case 7: {
        const bool has = object->hasListParameter(name);
        const bool found = object->removeListParameter(name) != 2;
        fuzz::check(found == has && !object->hasListParameter(name), "list removed");
        break;
      }
      case 8: {
        const bool has = object->hasExtension(name);
        fuzz::check((object->removeExtension(name) == 0) == has, "extension removed");
        break;
      }
      case 9:
      case 10:
        if (auto* const scalar = pickDetached(side.scalars)) {
          const bool has = object->hasScalarParameter(scalar->getId());
          fuzz::check(object->addParameter(*scalar) == (has ? 1 : 0), "parameter added");
        }
        break;
      case 11:
        if (auto* const list = pickDetached(side.lists)) {
          const bool has = object->hasListParameter(list->getId());
          fuzz::check(object->addParameter(*list) == (has ? 1 : 0), "list added");
        }
        break;
      case 12:
        if (auto* const extension = pickDetached(side.extensions)) {
          object->addParameter(*extension);
        }
        break;
      case 13:
        clone(*object, input_.ConsumeBool() ? side : elsewhere);
        break;
      case 14:
        fuzz::check((object->getScalarParameter(name.c_str()) != nullptr) ==
                        object->hasScalarParameter(name),
                    "has its parameters");
        fuzz::check((object->getListParameter(name) != nullptr) == object->hasListParameter(name),
                    "has its lists");
        fuzz::check((object->getExtension(name) != nullptr) == object->hasExtension(name),
                    "has its extensions");
        break;
      default:
        object->getNextSiblingElement();
        object->getFirstChildElement(textOrNull());
        object->getVersion();
        break;
    }
  }

  static void clone(const LibTarnManagedObject& object, Side& target) {
    auto* const copy = dynamic_cast<LibTarnManagedObject*>(object.clone(target.factory()));
    fuzz::check(copy != nullptr, "clone");
    target.collect(*copy);
  }

  void onList(Side& side) {
    List* const list = pick(side.lists);
    Structure* const item = pick(side.items);
    Scalar* const scalar = pickDetached(side.scalars);
    switch (input_.ConsumeIntegralInRange<int>(0, 9)) {
      case 0:
      case 1:
        if (list && scalar) {
          fuzz::check(list->addValue(*scalar) == (list->hasStructuredValues() ? 1 : 0),
                      "value added");
        }
        break;
      case 2:
      case 3:
        if (list && item && !elementOf(*item).getParent()) {
          fuzz::check(list->addValue(*item) == (list->hasScalarValues() ? 1 : 0), "item added");
        }
        break;
      case 4:
        if (list) list->match(*pick(side.lists));
        break;
      case 5:
      case 6:
        if (item && scalar) {
          const bool has = item->hasComponent(scalar->getId());
          fuzz::check(item->addComponent(*scalar) == (has ? 1 : 0), "component added");
        }
        break;
      case 7:
        if (item) item->match(*pick(side.items));
        break;
      case 8:
        if (Scalar* const any = pick(side.scalars)) {
          const std::string value = text();
          any->setValue(input_.ConsumeBool() ? any->getValue() : value.c_str());
          any->match(*pick(side.scalars));
          fuzz::check(any->isValueEmpty() == (*any->getValue() == '\0'), "empty value");
        }
        break;
      default:
        onIndexes(side);
        break;
    }
  }

  void onIndexes(Side& side) {
    Scalar* const scalar = pick(side.scalars);
    List* const list = pick(side.lists);
    switch (input_.ConsumeIntegralInRange<int>(0, 5)) {
      case 0:
        if (scalar) side.scalarIndex.add(*scalar);
        break;
      case 1:
        if (scalar) side.scalarIndex.remove(*scalar);
        break;
      case 2:
        side.scalarIndex.removeByName(text());
        break;
      case 3:
        if (list) side.listIndex.add(*list);
        break;
      case 4:
        if (list) side.listIndex.remove(*list);
        break;
      default:
        side.listIndex.removeByName(text());
        break;
    }
  }

  void onExtension(Side& side) {
    LibTarnExtension* const extension = pick(side.extensions);
    if (!extension) return;
    const std::string name = text();
    const bool has = extension->hasParameter(name);
    switch (input_.ConsumeIntegralInRange<int>(0, 3)) {
      case 0:
        fuzz::check((extension->getParameter(name) != nullptr) == has, "has its parameters");
        break;
      case 1:
        fuzz::check(extension->removeParameter(name) == (has ? 0 : 2), "parameter removed");
        break;
      default:
        if (auto* const scalar = pickDetached(side.scalars)) extension->addParameter(*scalar);
        break;
    }
  }

  void onHeader(Side& side, Side& elsewhere) {
    LibTarnHeader* const header = pick(side.headers);
    if (!header) return;
    if (input_.ConsumeIntegralInRange<int>(0, 3) == 0) {
      Side& target = input_.ConsumeBool() ? side : elsewhere;
      auto* const copy = dynamic_cast<LibTarnHeader*>(header->clone(target.factory()));
      fuzz::check(copy != nullptr, "clone of a header");
      target.headers.push_back(copy);
    } else if (auto* const log = pickDetached(side.logs)) {
      header->addLog(*log);
      unsigned count = 0;
      for (const auto* each = header->getLogs(); each; each = each->getNextSiblingElement()) {
        ++count;
      }
      fuzz::check(count <= LibTarnHeader::MAX_LOG_COUNT, "number of log entries");
    } else if (auto* const any = pick(side.logs)) {
      any->updateDateTime();
    }
  }

  // The indexes are not updated.
  void onAny(Side& side) {
    IElement* element = nullptr;
    switch (input_.ConsumeIntegralInRange<int>(0, 7)) {
      case 0:
        element = pick(side.cmDatas);
        break;
      case 1:
        element = pick(side.headers);
        break;
      case 2:
        element = pick(side.logs);
        break;
      case 3:
        element = pick(side.objects);
        break;
      case 4:
        element = pick(side.scalars);
        break;
      case 5:
        element = pick(side.lists);
        break;
      case 6:
        element = pick(side.items);
        break;
      default:
        element = pick(side.extensions);
        break;
    }
    if (!element) return;
    side.indexes = Indexes::SOUND;
    element->removeThisElement();
  }

  void merge(Side& side, Side& elsewhere) {
    TarnMerge merge(side.document);
    switch (input_.ConsumeIntegralInRange<int>(0, 3)) {
      case 0:
        merge.mergeDocument(elsewhere.document);
        break;
      case 1:
        merge.mergeDocument(side.document);
        break;
      case 2: {
        LibTarnManagedObject* const source = pick(side.objects);
        const LibTarnManagedObject* const delta =
            pick(elsewhere.objects.empty() ? side.objects : elsewhere.objects);
        if (source && delta) merge.doOperationUpdate(source, delta);
        break;
      }
      default:
        if (auto* const delta = pick(input_.ConsumeBool() ? side.objects : elsewhere.objects)) {
          merge.mergeManagedObject(*delta);
        }
        break;
    }
    side.collect();
  }

  FuzzedDataProvider input_;
  std::deque<std::string> kept_;
  Side sides_[2];
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Session(data, size).run();
  return 0;
}
