#include "libtarn/model/StructureImp.hpp"

#include "../text/attributeNames.hpp"
#include "../text/patternText.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "TypedChildren.hpp"
#include "indexChildren.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/exceptions/DuplicateElementException.hpp"
#include "libtarn/model/indexation/ITarnIndexFactory.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace model {

namespace {

// Where an item without a parent is, for messages.
constexpr const char* NO_PARENT = "(list: )";

}  // namespace

StructureImp::StructureImp(libDomXml::IMemoryPool* pool,
                           const indexation::ITarnIndexFactory* indexFactory,
                           util::TarnFactory& factory)
    : ModelNode(pool, factory, TAG_NAME),
      indexFactory_(indexFactory),
      componentIndex_(checkedIndex(indexFactory_->createUniqueScalarNameTarnIndex())) {}

StructureImp* StructureImp::clone() const { return clone(factory_); }

StructureImp* StructureImp::clone(util::TarnFactory& factory) const {
  return static_cast<StructureImp*>(cloneTree(factory));
}

StructureImp* StructureImp::clone(libDomXml::IDomDocument* /*document*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION, "StructureImp::clone(IDomDocument* document)");
  return nullptr;
}

libDomXml::ElementCopy StructureImp::copySelf(util::TarnFactory& factory) const {
  return {factory.allocateStructureNode(), true};
}

// A copy is indexed before it has a parent.
void StructureImp::finishCopy() {
  if (const ScalarImp* const second = indexComponents()) throwDuplicate(NO_PARENT, *second);
}

void StructureImp::dispatchToChildren(validation::Validator& validator) const {
  for (const auto& entry : getComponents()) {
    implementation<ScalarImp>(*entry.second).accept(validator);
  }
}

void StructureImp::dispatchToSelf(validation::Validator& validator) const {
  validator.visit(*this);
}

void StructureImp::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, nullptr);
}

bool StructureImp::hasComponent(const std::string& name) const {
  return getComponent(name) != nullptr;
}

Scalar* StructureImp::getComponent(const std::string& name) const {
  return componentIndex_->find(name.c_str());
}

indexation::ScalarCollection StructureImp::getComponents() const {
  return componentIndex_->getCollection();
}

std::uint8_t StructureImp::addComponent(Scalar& component) {
  auto& element = implementation<ScalarImp>(component);
  if (hasComponent(component.getId())) return EditResult::Refused;
  componentIndex_->add(&component);
  addChild(&element);
  return EditResult::Done;
}

bool StructureImp::match(const Structure& pattern) const {
  for (const auto& entry : pattern.getComponents()) {
    if (!hasMatch(*entry.second)) return false;
  }
  return true;
}

// Only the component of that name can match a pattern that has a name.
bool StructureImp::hasMatch(const Scalar& pattern) const {
  const char* const name = pattern.getName();
  if (!isEmptyText(name) && !isWildcard(name)) {
    const Scalar* const component = componentIndex_->find(name);
    return component && component->match(pattern);
  }
  for (const auto& entry : getComponents()) {
    if (entry.second->match(pattern)) return true;
  }
  return false;
}

StructureImp* StructureImp::getNextSiblingElement() const { return nextTypedSibling(*this); }

IElement* StructureImp::getFirstChildElement(const char* name) const {
  return dynamic_cast<IElement*>(getFirstChild(name));
}

void StructureImp::removeThisElement() { unlinkFromParent(); }

void StructureImp::rebuildIndexers() {
  if (const ScalarImp* const second = indexComponents()) throwDuplicate(parentText(), *second);
}

// Returns the second component of a name, or null.
const ScalarImp* StructureImp::indexComponents() {
  auto* child = firstTypedChild<ScalarImp>(*this);
  while (child && indexOnce<Scalar>(*componentIndex_, *child)) child = nextTypedSibling(*child);
  return child;
}

// An item need not be in a list of a managed object: a missing part counts as "".
std::string StructureImp::parentText() const {
  const auto* const list = dynamic_cast<const ListImp*>(getParent());
  const auto* const object =
      list ? dynamic_cast<const LibTarnManagedObjectImp*>(list->getParent()) : nullptr;
  const std::string distName = object ? object->getAttribute(DistinguishedName::ATTR_NAME, "") : "";
  return distName + "(list: " + (list ? list->getId() : "") + ")";
}

void StructureImp::throwDuplicate(const std::string& parent, const ScalarImp& component) {
  throw exceptions::DuplicateElementException::instance(
      Scalar::TAG_NAME, parent.c_str(), NAME_ATTRIBUTE, textOrEmpty(component.getName()));
}

}  // namespace model
}  // namespace libtarn
