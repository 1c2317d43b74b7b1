#include "model/StructureImp.hpp"

#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "IndexingParse.hpp"
#include "attributeNames.hpp"
#include "indexChildren.hpp"
#include "model/LibTarnManagedObjectImp.hpp"
#include "model/ListImp.hpp"
#include "model/ScalarImp.hpp"
#include "model/TypedChildren.hpp"
#include "model/exceptions/DuplicateElementException.hpp"
#include "model/indexation/ITarnIndexFactory.hpp"
#include "model/validation/Validator.hpp"
#include "patternText.hpp"
#include "util/TarnFactory.hpp"

namespace libtarn {
namespace model {

StructureImp::StructureImp(libDomXml::IMemoryPool* pool,
                           const indexation::ITarnIndexFactory* indexFactory,
                           util::TarnFactory& factory)
    : TarnDomElement(pool),
      indexFactory_(indexFactory),
      componentIndex_(checkedIndex(indexFactory_->createUniqueScalarNameTarnIndex())),
      factory_(factory) {
  xml_base::name(TAG_NAME);
}

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

void StructureImp::finishCopy() { rebuildIndexers(); }

void StructureImp::dispatchToChildren(validation::Validator& validator) const {
  for (const auto& entry :
       validator.isAnyOrderAllowed() ? componentIndex_->getUnordered() : getComponents()) {
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
  if (!componentIndex_->add(&component)) return 1;
  addChild(&element);
  return 0;
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
  for (auto* child = firstTypedChild<ScalarImp>(*this); child; child = nextTypedSibling(*child)) {
    if (!indexOnce<Scalar>(*componentIndex_, *child)) throwDuplicate(textOrEmpty(child->getName()));
  }
}

bool StructureImp::indexParsed(IndexingParse& parse, std::string_view listName,
                               const bool& condition) {
  parse.components.start(listName);
  for (auto* node = first_node(); node; node = node->next_sibling()) {
    auto* const component = typedAs<ScalarImp>(node);
    if (component && !parse.components.add(*component, component)) parse.followsRules = false;
  }
  return indexOnceTrue(*componentIndex_, parse.components, condition);
}

// An item need not be in a list of a managed object: what is missing is told as "".
void StructureImp::throwDuplicate(const char* componentName) const {
  const auto* const list = dynamic_cast<const ListImp*>(getParent());
  const auto* const object =
      list ? dynamic_cast<const LibTarnManagedObjectImp*>(list->getParent()) : nullptr;
  const std::string distName = object ? object->getAttribute(DistinguishedName::ATTR_NAME, "") : "";
  const std::string parent = distName + "(list: " + (list ? list->getId() : "") + ")";
  throw exceptions::DuplicateElementException::instance(Scalar::TAG_NAME, parent.c_str(),
                                                        NAME_ATTRIBUTE, componentName);
}

}  // namespace model
}  // namespace libtarn
