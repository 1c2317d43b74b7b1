#include "libtarn/model/LibTarnExtensionImp.hpp"

#include "../text/attributeNames.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "TypedChildren.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/exceptions/DuplicateElementException.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace model {

LibTarnExtensionImp::LibTarnExtensionImp(libDomXml::IMemoryPool* pool, util::TarnFactory& factory)
    : ModelNode(pool, factory, TAG_NAME), parameters_(NAME_ATTRIBUTE) {}

LibTarnExtensionImp* LibTarnExtensionImp::clone() const { return clone(factory_); }

LibTarnExtensionImp* LibTarnExtensionImp::clone(util::TarnFactory& factory) const {
  return static_cast<LibTarnExtensionImp*>(cloneTree(factory));
}

LibTarnExtensionImp* LibTarnExtensionImp::clone(libDomXml::IDomDocument* /*document*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION, "LibTarnExtensionImp::clone(IDomDocument* document)");
  return nullptr;
}

libDomXml::ElementCopy LibTarnExtensionImp::copySelf(util::TarnFactory& factory) const {
  LibTarnExtensionImp* const copy = factory.allocateExtensionNode();
  if (const char* const name = getName()) copy->setAttribute(NAME_ATTRIBUTE, name);
  return {copy, true};
}

void LibTarnExtensionImp::dispatchToChildren(validation::Validator& validator) const {
  for (auto* child = firstTypedChild<ScalarImp>(*this); child; child = nextTypedSibling(*child)) {
    child->accept(validator);
  }
}

void LibTarnExtensionImp::dispatchToSelf(validation::Validator& validator) const {
  validator.visit(*this);
}

void LibTarnExtensionImp::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, getName());
}

const char* LibTarnExtensionImp::getName() const { return getLiteralAttribute(NAME_ATTRIBUTE); }

std::string LibTarnExtensionImp::getId() const { return getAttribute(NAME_ATTRIBUTE, ""); }

bool LibTarnExtensionImp::hasParameters() const {
  return firstTypedChild<ScalarImp>(*this) != nullptr;
}

Scalar* LibTarnExtensionImp::getParameters() const { return firstTypedChild<ScalarImp>(*this); }

bool LibTarnExtensionImp::hasParameter(const std::string& name) const {
  return parameters_.has(*this, name);
}

Scalar* LibTarnExtensionImp::getParameter(const std::string& name) const {
  return parameters_.find(*this, name);
}

std::uint8_t LibTarnExtensionImp::addParameter(Scalar& parameter) {
  try {
    parameters_.add(*this, implementation<ScalarImp>(parameter));
  } catch (const exceptions::DuplicateElementException&) {
    return EditResult::Refused;
  }
  return EditResult::Done;
}

std::uint8_t LibTarnExtensionImp::removeParameter(const std::string& name) {
  ScalarImp* const parameter = parameters_.find(*this, name);
  if (!parameter) return EditResult::NoSuchElement;
  removeChild(parameter);
  return EditResult::Done;
}

LibTarnExtensionImp* LibTarnExtensionImp::getNextSiblingElement() const {
  return nextTypedSibling(*this);
}

IElement* LibTarnExtensionImp::getFirstChildElement(const char* name) const {
  return dynamic_cast<IElement*>(getFirstChild(name));
}

void LibTarnExtensionImp::removeThisElement() { unlinkFromParent(); }

}  // namespace model
}  // namespace libtarn
