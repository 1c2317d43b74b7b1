#include "libtarn/model/ScalarImp.hpp"

#include <cstring>

#include "../text/attributeNames.hpp"
#include "../text/patternText.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "TypedChildren.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace model {

ScalarImp* ScalarImp::clone() const { return clone(factory_); }

ScalarImp* ScalarImp::clone(util::TarnFactory& factory) const {
  return static_cast<ScalarImp*>(cloneTree(factory));
}

ScalarImp* ScalarImp::clone(libDomXml::IDomDocument* /*document*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION, "ScalarImp::clone(IDomDocument* document)");
  return nullptr;
}

libDomXml::ElementCopy ScalarImp::copySelf(util::TarnFactory& factory) const {
  ScalarImp* const copy = factory.allocateScalarNode();
  cloneAttributes(copy);
  copy->setValue(getValue());
  return {copy, false};
}

void ScalarImp::dispatchToChildren(validation::Validator& /*validator*/) const {}

void ScalarImp::dispatchToSelf(validation::Validator& validator) const { validator.visit(*this); }

void ScalarImp::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, getName());
}

const char* ScalarImp::getName() const {
  const char* const name = getLiteralAttribute(NAME_ATTRIBUTE);
  return isEmptyText(name) ? nullptr : name;
}

std::string ScalarImp::getId() const { return getAttribute(NAME_ATTRIBUTE, ""); }

bool ScalarImp::isValueEmpty() const { return isEmptyText(getValue()); }

const char* ScalarImp::getValue() const { return ModelNode::getValue(); }

void ScalarImp::setValue(const char* value) { ModelNode::setValue(value); }

bool ScalarImp::match(const Scalar& pattern) const {
  const char* const patternName = pattern.getName();
  if (!isEmptyText(patternName) && !isWildcard(patternName)) {
    const char* const name = getName();
    if (!name || std::strcmp(name, patternName) != 0) return false;
  }
  const char* const patternValue = pattern.getValue();
  if (isEmptyText(patternValue) || isWildcard(patternValue)) return true;
  return std::strcmp(getValue(), patternValue) == 0;
}

ScalarImp* ScalarImp::getNextSiblingElement() const { return nextTypedSibling(*this); }

IElement* ScalarImp::getFirstChildElement(const char* name) const {
  return dynamic_cast<IElement*>(getFirstChild(name));
}

void ScalarImp::removeThisElement() { unlinkFromParent(); }

}  // namespace model
}  // namespace libtarn
