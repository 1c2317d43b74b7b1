#include "libtarn/model/LibTarnCmDataImp.hpp"

#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <string_view>
#include <vector>

#include "../text/attributeNames.hpp"
#include "../text/patternText.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "Internals.hpp"
#include "StagedAttribute.hpp"
#include "TypedChildren.hpp"
#include "indexChildren.hpp"
#include "indexation/ObjectView.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/exceptions/DuplicateElementException.hpp"
#include "libtarn/model/indexation/ITarnIndexFactory.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace model {

namespace {

constexpr const char* ID_ATTRIBUTE = "id";
constexpr const char* TYPE_ATTRIBUTE = "type";

// An absent name counts as the empty text.
DistinguishedName nameOf(const LibTarnManagedObject& object) {
  return DistinguishedName(textOrEmpty(object.getDistName().getText()));
}

}  // namespace

// The order determines the ordinals.
const LibTarnCmData::Type LibTarnCmData::Type::ACTUAL("actual");
const LibTarnCmData::Type LibTarnCmData::Type::PLAN("plan");
const LibTarnCmData::Type LibTarnCmData::Type::DEFAULTS("defaults");

LibTarnCmDataImp::LibTarnCmDataImp(libDomXml::IMemoryPool* pool,
                                   const indexation::ITarnIndexFactory* indexFactory,
                                   util::TarnFactory& factory)
    : ModelNode(pool, factory, TAG_NAME),
      type_(this, TYPE_ATTRIBUTE),
      indexFactory_(indexFactory),
      managedObjectIndex_(checkedIndex(indexFactory_->createUniqueAndNonUniqueMultiIndex())) {}

LibTarnCmDataImp* LibTarnCmDataImp::clone() const { return clone(factory_); }

LibTarnCmDataImp* LibTarnCmDataImp::clone(util::TarnFactory& factory) const {
  return static_cast<LibTarnCmDataImp*>(cloneTree(factory));
}

LibTarnCmDataImp* LibTarnCmDataImp::clone(libDomXml::IDomDocument* /*document*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION, "LibTarnCmDataImp::clone(IDomDocument* document)");
  return nullptr;
}

libDomXml::ElementCopy LibTarnCmDataImp::copySelf(util::TarnFactory& factory) const {
  TarnDomElement* const copy = factory.allocateTarnCmDataNode();
  cloneAttributes(copy);
  return {copy, true};
}

void LibTarnCmDataImp::dispatchToChildren(validation::Validator& validator) const {
  for (auto* header = firstTypedChild<LibTarnHeaderImp>(*this); header;
       header = nextTypedSibling(*header)) {
    header->accept(validator);
  }
  for (const LibTarnManagedObject* object : getLibTarnManagedObjects()) {
    implementation<LibTarnManagedObjectImp>(*object).accept(validator);
  }
}

void LibTarnCmDataImp::dispatchToSelf(validation::Validator& validator) const {
  validator.visit(*this);
}

void LibTarnCmDataImp::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, nullptr);
}

LibTarnCmData::Type LibTarnCmDataImp::getType() const {
  return type_.hasValue() ? Type(type_.getValue()) : Type::DEFAULTS;
}

void LibTarnCmDataImp::setType(const Type& type) { type_.set(type); }

const char* LibTarnCmDataImp::getId() const { return getAttribute(ID_ATTRIBUTE); }

LibTarnHeader* LibTarnCmDataImp::getLibTarnHeader() const {
  return firstTypedChild<LibTarnHeaderImp>(*this);
}

void LibTarnCmDataImp::setLibTarnHeader(LibTarnHeader& header) {
  auto& element = implementation<LibTarnHeaderImp>(header);
  if (auto* const current = firstTypedChild<LibTarnHeaderImp>(*this)) removeChild(current);
  // `header` may be another header of this element.
  removeChild(&element);
  addChild(&element);
}

bool LibTarnCmDataImp::hasLibTarnManagedObject(const DistinguishedName& distName) const {
  return getLibTarnManagedObject(distName) != nullptr;
}

LibTarnManagedObject* LibTarnCmDataImp::getLibTarnManagedObject(
    const DistinguishedName& distName) const {
  return managedObjectIndex_->findUniqueElement(textOrEmpty(distName.getText()));
}

indexation::ManagedObjectCollection LibTarnCmDataImp::getLibTarnManagedObjects() const {
  return managedObjectIndex_->getCollection();
}

indexation::ManagedObjectCollection LibTarnCmDataImp::getLibTarnManagedObjectsByClass(
    const std::string& className) const {
  return managedObjectIndex_->getNonUniqueCollection(className.c_str());
}

void LibTarnCmDataImp::addLibTarnManagedObject(LibTarnManagedObject& object) {
  auto& element = implementation<LibTarnManagedObjectImp>(object);
  if (hasLibTarnManagedObject(object.getDistName())) return;
  managedObjectIndex_->add(&object);
  addChild(&element);
}

std::uint8_t LibTarnCmDataImp::removeLibTarnManagedObject(const DistinguishedName& distName) {
  if (!hasLibTarnManagedObject(distName)) return EditResult::NoSuchElement;
  if (findChildThatLost(textOrEmpty(distName.getText())).object) {
    managedObjectIndex_->prepareAdd(distName.getText());
  }
  return removeWithoutMemory(distName);
}

std::uint8_t LibTarnCmDataImp::removeWithoutMemory(const DistinguishedName& distName) {
  LibTarnManagedObject* const object = getLibTarnManagedObject(distName);
  if (!object) return EditResult::NoSuchElement;
  const bool wasChild = removeChild(&implementation<LibTarnManagedObjectImp>(*object));
  managedObjectIndex_->remove(object);
  indexUnindexed(textOrEmpty(distName.getText()));
  if (!wasChild) return EditResult::Refused;
  return EditResult::Done;
}

std::size_t LibTarnCmDataImp::getManagedObjectNumber() const { return managedObjectIndex_->size(); }

void LibTarnCmDataImp::setMoDistName(LibTarnManagedObjectImp& object, const char* distName) {
  StagedAttributes attributes;
  attributes.distName.emplace(object, DistinguishedName::ATTR_NAME, distName);
  prepareMoKeys(object, distName);
  setMoAttributes(object, attributes);
}

void LibTarnCmDataImp::prepareMoKeys(const LibTarnManagedObjectImp& object, const char* distName) {
  managedObjectIndex_->prepareAdd(distName);
  const LibTarnManagedObject* const holder = getLibTarnManagedObject(distName);
  if (holder && holder != &object) prepareUnindexed();
}

// Name and class are keys of the index. An object that is not indexed, because another one has its
// name, must not be removed from the index by that name.
void LibTarnCmDataImp::setMoAttributes(LibTarnManagedObjectImp& object,
                                       StagedAttributes& attributes) {
  const bool isRenamed = attributes.distName.has_value();
  const bool wasIndexed = isIndexed(object);
  if (!wasIndexed && isRenamed) {
    util::Logger(util::Logger::Level::ERROR, TARN_LOG_LOCATION, "setMoDistName")
        << "There was no such object in the index, that shouldn't happen";
  }
  if (!attributes.haveKeys() || (!wasIndexed && !isRenamed)) return attributes.set();

  const char* const earlierName = nameOf(object).getText();
  if (wasIndexed) managedObjectIndex_->remove(&object);
  attributes.set();
  bool isAdded = false;
  try {
    isAdded = managedObjectIndex_->add(&object);
  } catch (...) {
    // Only a host's index, which may not implement prepareAdd(), can throw here.
    attributes.takeBack();
    if (wasIndexed) managedObjectIndex_->add(&object);
    throw;
  }
  if (!wasIndexed) forgetUnindexed(object, earlierName);
  if (!isAdded) rememberUnindexed(object);
  if (wasIndexed) indexUnindexed(earlierName);
  if (!isAdded) {
    util::Logger(util::Logger::Level::ERROR, TARN_LOG_LOCATION, "setMoDistName")
        << "Adding object to index failed, that shouldn't happen";
  }
}

bool LibTarnCmDataImp::isIndexed(const LibTarnManagedObjectImp& object) const {
  return getLibTarnManagedObject(nameOf(object)) == &object;
}

// Returns the first entry of that name whose object satisfies `isIt`; without an object when there
// is none. A host can unlink or rename a child without this element: its entry then stays, so
// callers look at the child itself.
template <class Predicate>
indexation::ManagedObjectEntry LibTarnCmDataImp::findUnindexed(const char* distName,
                                                               Predicate isIt) const {
  indexation::ManagedObjectEntry key{distName, nullptr, 0};
  while (unindexed_) {
    const indexation::ManagedObjectEntry* const entry = unindexed_->lowerBound(key).entry;
    if (!entry || std::strcmp(entry->key, distName) != 0) break;
    if (isIt(implementation<LibTarnManagedObjectImp>(*entry->object))) return *entry;
    key.serial = entry->serial + 1;
  }
  return {};
}

indexation::ManagedObjectEntry LibTarnCmDataImp::findChildThatLost(const char* distName) const {
  return findUnindexed(distName, [this, distName](const LibTarnManagedObjectImp& object) {
    return object.parent() == this && std::strcmp(nameOf(object).getText(), distName) == 0;
  });
}

// Indexes a child that lost that name, now that the name is free. When the index cannot take it, it
// stays unindexed: the edit that freed the name is done.
void LibTarnCmDataImp::indexUnindexed(const char* distName) {
  const indexation::ManagedObjectEntry entry = findChildThatLost(distName);
  if (!entry.object) return;
  try {
    if (managedObjectIndex_->add(entry.object)) unindexed_->erase(entry);
  } catch (...) {  // NOLINT(bugprone-empty-catch)
  }
}

void LibTarnCmDataImp::prepareUnindexed() {
  if (!unindexed_) {
    void* const memory = domFactory_.allocateObject(sizeof(Unindexed));
    unindexed_ = new (memory) Unindexed(domFactory_.getMemoryPool());
  }
  unindexed_->prepareAdd();
}

void LibTarnCmDataImp::rememberUnindexed(LibTarnManagedObjectImp& object) {
  prepareUnindexed();
  // Each add() counts as a change, so the serials are distinct and increase.
  unindexed_->add({nameOf(object).getText(), &object, unindexed_->changes});
}

void LibTarnCmDataImp::forgetUnindexed(const LibTarnManagedObjectImp& object,
                                       const char* distName) {
  const indexation::ManagedObjectEntry entry = findUnindexed(
      distName, [&object](const LibTarnManagedObjectImp& each) { return &each == &object; });
  if (entry.object) unindexed_->erase(entry);
}

// The object that has the name in the index may no longer be a child.
void LibTarnCmDataImp::checkNames() const {
  if (!unindexed_) return;
  std::map<std::string_view, const LibTarnManagedObject*> children;
  for (const LibTarnManagedObject* each : unindexed_->unfollowed()) {
    const auto& object = implementation<LibTarnManagedObjectImp>(*each);
    if (object.parent() != this || isIndexed(object)) continue;
    const DistinguishedName distName = nameOf(object);
    const auto* const holder = elementCast<LibTarnManagedObjectImp>(
        static_cast<const LibTarnManagedObject*>(getLibTarnManagedObject(distName)));
    const LibTarnManagedObject* const child =
        children.emplace(distName.getText(), &object).first->second;
    if (child == &object && !(holder && holder->parent() == this)) continue;
    throw exceptions::DuplicateElementException::instance(LibTarnManagedObject::TAG_NAME, TAG_NAME,
                                                          DistinguishedName::ATTR_NAME, distName);
  }
}

void LibTarnCmDataImp::removeAllLibTarnManagedObjects() {
  for (LibTarnManagedObject* object : getLibTarnManagedObjects()) {
    removeChild(&implementation<LibTarnManagedObjectImp>(*object));
  }
  if (unindexed_) {
    for (LibTarnManagedObject* object : unindexed_->unfollowed()) {
      removeChild(&implementation<LibTarnManagedObjectImp>(*object));
    }
    unindexed_->clear();
  }
  managedObjectIndex_->clear();
}

void LibTarnCmDataImp::rebuildIndexersAndInitializeEnums() {
  initializeType();
  rebuildIndexers();
}

void LibTarnCmDataImp::rebuildIndexers() {
  const bool areAdded = addAllChildren();
  for (auto* object = firstTypedChild<LibTarnManagedObjectImp>(*this); object;
       object = nextTypedSibling(*object)) {
    // An object that is indexed already, as after a second rebuild, is not a duplicate of itself.
    if (!areAdded && !managedObjectIndex_->add(object) &&
        getLibTarnManagedObject(nameOf(*object)) != object) {
      throw exceptions::DuplicateElementException::instance(
          LibTarnManagedObject::TAG_NAME, TAG_NAME, DistinguishedName::ATTR_NAME, nameOf(*object));
    }
    object->rebuildIndexersAndInitializeEnumAndDispatchToChildren();
  }
}

// Adds all children at once, for a host's index that offers this.
bool LibTarnCmDataImp::addAllChildren() {
  if (Internals::isLibraryIndexed(*this) || managedObjectIndex_->size() > 0) return false;
  std::vector<indexation::ManagedObjectEntry> entries;
  for (auto* object = firstTypedChild<LibTarnManagedObjectImp>(*this); object;
       object = nextTypedSibling(*object)) {
    entries.push_back({nameOf(*object).getText(), object, entries.size()});
  }
  return managedObjectIndex_->addAll(entries.data(), entries.size());
}

LibTarnCmDataImp* LibTarnCmDataImp::getNextSiblingElement() const {
  return nextTypedSibling(*this);
}

IElement* LibTarnCmDataImp::getFirstChildElement(const char* name) const {
  return dynamic_cast<IElement*>(getFirstChild(name));
}

void LibTarnCmDataImp::removeThisElement() { unlinkFromParent(); }

}  // namespace model
}  // namespace libtarn
