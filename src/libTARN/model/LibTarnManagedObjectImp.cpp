#include "libtarn/model/LibTarnManagedObjectImp.hpp"

#include <cstring>
#include <optional>
#include <string_view>

#include "../text/attributeNames.hpp"
#include "../text/patternText.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "StagedAttribute.hpp"
#include "TypedChildren.hpp"
#include "UndoLog.hpp"
#include "changedDistName.hpp"
#include "indexChildren.hpp"
#include "libtarn/model/IDistinguishedNameValidator.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/exceptions/DuplicateElementException.hpp"
#include "libtarn/model/indexation/ITarnIndexFactory.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace model {

const char* const LibTarnManagedObjectImp::UNIQUE_CONTAINER_ID_ATTR_NAME = NAME_ATTRIBUTE;

// The order determines the ordinals.
const LibTarnManagedObject::Operation LibTarnManagedObject::Operation::CREATE("create");
const LibTarnManagedObject::Operation LibTarnManagedObject::Operation::DELETE("delete");
const LibTarnManagedObject::Operation LibTarnManagedObject::Operation::UPDATE("update");
const LibTarnManagedObject::Operation LibTarnManagedObject::Operation::AUTO("auto");

LibTarnManagedObjectImp::LibTarnManagedObjectImp(
    libDomXml::IMemoryPool* pool, const IDistinguishedNameValidator* distNameValidator,
    const indexation::ITarnIndexFactory* indexFactory, util::TarnFactory& factory)
    : ModelNode(pool, factory, TAG_NAME),
      distNameValidator_(distNameValidator),
      indexFactory_(indexFactory),
      scalarIndex_(checkedIndex(indexFactory_->createUniqueScalarNameTarnIndex())),
      listIndex_(checkedIndex(indexFactory_->createUniqueIndexForList())),
      operation_(this, OPERATION_ATTRIBUTE),
      extensions_(UNIQUE_CONTAINER_ID_ATTR_NAME) {}

LibTarnManagedObjectImp* LibTarnManagedObjectImp::clone() const { return clone(factory_); }

LibTarnManagedObjectImp* LibTarnManagedObjectImp::clone(util::TarnFactory& factory) const {
  return static_cast<LibTarnManagedObjectImp*>(cloneTree(factory));
}

LibTarnManagedObjectImp* LibTarnManagedObjectImp::clone(
    libDomXml::IDomDocument* /*document*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION,
                          "LibTarnManagedObjectImp::clone(IDomDocument* document)");
  return nullptr;
}

libDomXml::ElementCopy LibTarnManagedObjectImp::copySelf(util::TarnFactory& factory) const {
  TarnDomElement* const copy = factory.allocateTarnManagedObjectNode();
  cloneAttributes(copy);
  return {copy, true};
}

void LibTarnManagedObjectImp::finishCopy() { rebuildIndexersAndInitializeEnum(); }

void LibTarnManagedObjectImp::dispatchToChildren(validation::Validator& validator) const {
  for (const auto& entry : getScalarParameters()) {
    implementation<ScalarImp>(*entry.second).accept(validator);
  }
  for (const auto& entry : getListParameters()) {
    implementation<ListImp>(*entry.second).accept(validator);
  }
  for (auto* extension = firstTypedChild<LibTarnExtensionImp>(*this); extension;
       extension = nextTypedSibling(*extension)) {
    extension->accept(validator);
  }
}

void LibTarnManagedObjectImp::dispatchToSelf(validation::Validator& validator) const {
  validator.visit(*this);
}

void LibTarnManagedObjectImp::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, getAttribute(DistinguishedName::ATTR_NAME));
}

// Attributes

const char* LibTarnManagedObjectImp::getClass() const {
  return getLiteralAttribute(CLASS_ATTRIBUTE);
}

const char* LibTarnManagedObjectImp::getVersion() const {
  return getLiteralAttribute(VERSION_ATTRIBUTE);
}

DistinguishedName LibTarnManagedObjectImp::getDistName() const {
  return DistinguishedName(getAttribute(DistinguishedName::ATTR_NAME));
}

LibTarnManagedObject::Operation LibTarnManagedObjectImp::getOperation() const {
  return operation_.hasValue() ? Operation(operation_.getValue()) : Operation::AUTO;
}

void LibTarnManagedObjectImp::setOperation(Operation operation) { operation_.set(operation); }

void LibTarnManagedObjectImp::setVersion(const std::string& version) {
  setAttribute(VERSION_ATTRIBUTE, version.c_str());
}

void LibTarnManagedObjectImp::clearOperation() { operation_.remove(); }

// An object below another kind of element is in no index.
std::uint8_t LibTarnManagedObjectImp::setDistName(const char* distName) {
  if (!distNameValidator_->isValid(distName)) return EditResult::Refused;
  if (auto* const cmData = dynamic_cast<LibTarnCmDataImp*>(getParent())) {
    cmData->setMoDistName(*this, distName);
  } else {
    setAttribute(DistinguishedName::ATTR_NAME, distName);
  }
  return EditResult::Done;
}

// Parameters

bool LibTarnManagedObjectImp::hasScalarParameter(const std::string& name) const {
  return scalarIndex_->find(name.c_str()) != nullptr;
}

Scalar* LibTarnManagedObjectImp::getScalarParameter(const char* name) const {
  return scalarIndex_->find(name);
}

indexation::ScalarCollection LibTarnManagedObjectImp::getScalarParameters() const {
  return scalarIndex_->getCollection();
}

std::uint8_t LibTarnManagedObjectImp::addParameter(Scalar& parameter) {
  auto& element = implementation<ScalarImp>(parameter);
  if (hasScalarParameter(parameter.getId())) return EditResult::Refused;
  scalarIndex_->add(&parameter);
  addChild(&element);
  return EditResult::Done;
}

std::uint8_t LibTarnManagedObjectImp::removeScalarParameter(const std::string& name) {
  Scalar* const parameter = scalarIndex_->find(name.c_str());
  if (!parameter) return EditResult::NoSuchElement;
  scalarIndex_->remove(name.c_str());
  if (!removeChild(&implementation<ScalarImp>(*parameter))) return EditResult::Refused;
  return EditResult::Done;
}

bool LibTarnManagedObjectImp::hasListParameter(const std::string& name) const {
  return listIndex_->find(name.c_str()) != nullptr;
}

List* LibTarnManagedObjectImp::getListParameter(const std::string& name) const {
  return listIndex_->find(name.c_str());
}

indexation::ListCollection LibTarnManagedObjectImp::getListParameters() const {
  return listIndex_->getCollection();
}

std::uint8_t LibTarnManagedObjectImp::addParameter(List& parameter) {
  auto& element = implementation<ListImp>(parameter);
  if (hasListParameter(parameter.getId())) return EditResult::Refused;
  listIndex_->add(&parameter);
  addChild(&element);
  return EditResult::Done;
}

std::uint8_t LibTarnManagedObjectImp::removeListParameter(const std::string& name) {
  List* const parameter = listIndex_->find(name.c_str());
  if (!parameter) return EditResult::NoSuchElement;
  listIndex_->remove(name.c_str());
  if (!removeChild(&implementation<ListImp>(*parameter))) return EditResult::Refused;
  return EditResult::Done;
}

// Extensions

bool LibTarnManagedObjectImp::hasExtension(const std::string& name) const {
  return extensions_.has(*this, name);
}

LibTarnExtension* LibTarnManagedObjectImp::getExtension(const std::string& name) const {
  return extensions_.find(*this, name);
}

LibTarnExtension* LibTarnManagedObjectImp::getExtensions() const {
  return firstTypedChild<LibTarnExtensionImp>(*this);
}

std::uint8_t LibTarnManagedObjectImp::addParameter(LibTarnExtension& extension) {
  try {
    extensions_.add(*this, implementation<LibTarnExtensionImp>(extension));
  } catch (const exceptions::DuplicateElementException&) {
    return EditResult::Refused;
  }
  return EditResult::Done;
}

std::uint8_t LibTarnManagedObjectImp::removeExtension(const std::string& name) {
  LibTarnExtensionImp* const extension = extensions_.find(*this, name);
  if (!extension) return EditResult::NoSuchElement;
  removeChild(extension);
  return EditResult::Done;
}

// Matching

bool LibTarnManagedObjectImp::match(const LibTarnManagedObject& pattern) const {
  return matchesAttributes(pattern) && matchesScalars(pattern) && matchesLists(pattern);
}

bool LibTarnManagedObjectImp::matchesAttributes(const LibTarnManagedObject& pattern) const {
  const char* const tag = implementation<LibTarnManagedObjectImp>(pattern).getTagName();
  if (!isEmptyText(tag) && !isSameText(tag, TAG_NAME)) return false;
  if (pattern.hasOperation() && !(hasOperation() && getOperation() == pattern.getOperation())) {
    return false;
  }
  if (!isWildcard(pattern.getClass()) && !isSameText(getClass(), pattern.getClass())) return false;
  if (!isWildcard(pattern.getVersion()) && !isSameText(getVersion(), pattern.getVersion())) {
    return false;
  }
  return matchesDistName(pattern.getDistName().getText());
}

// The pattern may be any part of this object's name.
bool LibTarnManagedObjectImp::matchesDistName(const char* pattern) const {
  if (isEmptyText(pattern) || isSameText(pattern, ANY_DIST_NAME)) return true;
  const char* const distName = getAttribute(DistinguishedName::ATTR_NAME);
  return distName && std::strstr(distName, pattern) != nullptr;
}

bool LibTarnManagedObjectImp::matchesScalars(const LibTarnManagedObject& pattern) const {
  for (const auto& entry : pattern.getScalarParameters()) {
    const Scalar* const parameter = getScalarParameter(entry.first);
    if (!parameter || !parameter->match(*entry.second)) return false;
  }
  return true;
}

bool LibTarnManagedObjectImp::matchesLists(const LibTarnManagedObject& pattern) const {
  for (const auto& entry : pattern.getListParameters()) {
    if (!hasMatch(*entry.second)) return false;
  }
  return true;
}

bool LibTarnManagedObjectImp::hasMatch(const List& pattern) const {
  if (!isWildcard(pattern.getName())) {
    const List* const list = getListParameter(pattern.getId());
    return list && list->match(pattern);
  }
  for (const auto& entry : getListParameters()) {
    if (entry.second->match(pattern)) return true;
  }
  return false;
}

// Changing

// First comes everything that needs memory or may be refused: the parameters, which are undone when
// something after them throws, and the texts of the attributes. Setting the attributes then cannot
// fail.
bool LibTarnManagedObjectImp::change(const LibTarnManagedObject& pattern,
                                     const LibTarnManagedObject& values) {
  if (!match(pattern)) return false;
  if (&values == this) return true;
  UndoLog log;
  replaceScalars(values, log);
  replaceLists(values, log);
  if (values.hasOperation()) log.setOperation(*this, values.getOperation());
  StagedAttributes attributes;
  stageAttributes(pattern, values, attributes);
  auto* const cmData = dynamic_cast<LibTarnCmDataImp*>(getParent());
  if (cmData && attributes.haveKeys()) {
    cmData->prepareMoKeys(*this, attributes.distName
                                     ? attributes.distName->text()
                                     : textOrEmpty(getAttribute(DistinguishedName::ATTR_NAME)));
  }
  cmData ? cmData->setMoAttributes(*this, attributes) : attributes.set();
  log.keep();
  return true;
}

void LibTarnManagedObjectImp::stageAttributes(const LibTarnManagedObject& pattern,
                                              const LibTarnManagedObject& values,
                                              StagedAttributes& attributes) {
  // An object that stays in its class keeps its position among the objects of the class.
  const char* const className = values.getClass();
  if (className && !isWildcard(className) && !isSameText(className, getClass())) {
    attributes.className.emplace(*this, CLASS_ATTRIBUTE, className);
  }
  const char* const version = values.getVersion();
  if (version && !isWildcard(version))
    attributes.version.emplace(*this, VERSION_ATTRIBUTE, version);
  const std::optional<std::string> distName =
      changedDistName(getAttribute(DistinguishedName::ATTR_NAME, ""), pattern, values);
  if (!distName || !distNameValidator_->isValid(distName->c_str())) return;
  attributes.distName.emplace(*this, DistinguishedName::ATTR_NAME, distName->c_str());
}

void LibTarnManagedObjectImp::replaceScalars(const LibTarnManagedObject& values, UndoLog& log) {
  for (const auto& entry : values.getScalarParameters()) {
    putParameter(*implementation<ScalarImp>(*entry.second).clone(factory_), log);
  }
}

void LibTarnManagedObjectImp::replaceLists(const LibTarnManagedObject& values, UndoLog& log) {
  for (const auto& entry : values.getListParameters()) {
    putParameter(*implementation<ListImp>(*entry.second).clone(factory_), log);
  }
}

void LibTarnManagedObjectImp::putParameter(Scalar& parameter, UndoLog& log) {
  Scalar* const earlier = log.putIntoIndex(*scalarIndex_, parameter);
  if (earlier) log.unlink(*this, implementation<ScalarImp>(*earlier));
  log.append(*this, implementation<ScalarImp>(parameter));
}

void LibTarnManagedObjectImp::putParameter(List& parameter, UndoLog& log) {
  List* const earlier = log.putIntoIndex(*listIndex_, parameter);
  if (earlier) log.unlink(*this, implementation<ListImp>(*earlier));
  log.append(*this, implementation<ListImp>(parameter));
}

// Tree

LibTarnManagedObjectImp* LibTarnManagedObjectImp::getNextSiblingElement() const {
  return nextTypedSibling(*this);
}

IElement* LibTarnManagedObjectImp::getFirstChildElement(const char* name) const {
  return dynamic_cast<IElement*>(getFirstChild(name));
}

void LibTarnManagedObjectImp::removeThisElement() { unlinkFromParent(); }

void LibTarnManagedObjectImp::rebuildIndexersAndInitializeEnum() {
  rebuildIndexersAndInitializeEnum(RebuildIndexersMode::OwnIndexes);
}

void LibTarnManagedObjectImp::rebuildIndexersAndInitializeEnumAndDispatchToChildren() {
  rebuildIndexersAndInitializeEnum(RebuildIndexersMode::DispatchToChildren);
}

// The operation is optional.
void LibTarnManagedObjectImp::rebuildIndexersAndInitializeEnum(RebuildIndexersMode mode) {
  if (hasOperation()) operation_.initialize();
  for (auto* child = firstTypedChild<ScalarImp>(*this); child; child = nextTypedSibling(*child)) {
    if (!indexOnce<Scalar>(*scalarIndex_, *child))
      throwDuplicate(Scalar::TAG_NAME, child->getName());
  }
  for (auto* list = firstTypedChild<ListImp>(*this); list; list = nextTypedSibling(*list)) {
    if (!indexOnce<List>(*listIndex_, *list)) throwDuplicate(List::TAG_NAME, list->getName());
    if (mode == RebuildIndexersMode::DispatchToChildren) {
      list->rebuildIndexersAndDispatchToChildren();
    }
  }
}

bool LibTarnManagedObjectImp::hasOperation() const {
  return getLiteralAttribute(OPERATION_ATTRIBUTE) != nullptr;
}

rapidxml::xml_attribute<char>* LibTarnManagedObjectImp::findOperationAttribute() const {
  return first_attribute(OPERATION_ATTRIBUTE, sizeof(OPERATION_ATTRIBUTE) - 1);
}

void LibTarnManagedObjectImp::throwDuplicate(const char* childTag, const char* name) const {
  throw exceptions::DuplicateElementException::instance(
      childTag, getAttribute(DistinguishedName::ATTR_NAME, ""), NAME_ATTRIBUTE, textOrEmpty(name));
}

}  // namespace model
}  // namespace libtarn
