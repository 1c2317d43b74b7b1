#include "libtarn/model/ListImp.hpp"

#include <string_view>

#include "../text/attributeNames.hpp"
#include "../text/patternText.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "TypedChildren.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace model {

ListImp* ListImp::clone() const { return clone(factory_); }

ListImp* ListImp::clone(util::TarnFactory& factory) const {
  return static_cast<ListImp*>(cloneTree(factory));
}

ListImp* ListImp::clone(libDomXml::IDomDocument* /*document*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION, "ListImp::clone(IDomDocument* document)");
  return nullptr;
}

libDomXml::ElementCopy ListImp::copySelf(util::TarnFactory& factory) const {
  ListImp* const copy = factory.allocateListNode();
  if (const char* const name = getName()) copy->setAttribute(NAME_ATTRIBUTE, name);
  return {copy, true};
}

void ListImp::dispatchToChildren(validation::Validator& validator) const {
  for (auto* value = firstTypedChild<ScalarImp>(*this); value; value = nextTypedSibling(*value)) {
    value->accept(validator);
  }
  for (auto* item = firstTypedChild<StructureImp>(*this); item; item = nextTypedSibling(*item)) {
    item->accept(validator);
  }
}

void ListImp::dispatchToSelf(validation::Validator& validator) const { validator.visit(*this); }

void ListImp::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, getName());
}

const char* ListImp::getName() const { return getLiteralAttribute(NAME_ATTRIBUTE); }

std::string ListImp::getId() const { return getAttribute(NAME_ATTRIBUTE, ""); }

bool ListImp::hasScalarValues() const { return firstTypedChild<ScalarImp>(*this) != nullptr; }

Scalar* ListImp::getScalarValues() const { return firstTypedChild<ScalarImp>(*this); }

std::uint8_t ListImp::addValue(Scalar& value) {
  if (hasStructuredValues()) return EditResult::Refused;
  addChild(&implementation<ScalarImp>(value));
  return EditResult::Done;
}

bool ListImp::hasStructuredValues() const {
  return firstTypedChild<StructureImp>(*this) != nullptr;
}

Structure* ListImp::getStructuredValues() const { return firstTypedChild<StructureImp>(*this); }

std::uint8_t ListImp::addValue(Structure& value) {
  if (hasScalarValues()) return EditResult::Refused;
  addChild(&implementation<StructureImp>(value));
  return EditResult::Done;
}

bool ListImp::match(const List& pattern) const {
  if (!isWildcard(pattern.getName()) && !isSameText(pattern.getName(), getName())) return false;
  for (const Scalar* value = pattern.getScalarValues(); value;
       value = value->getNextSiblingElement()) {
    if (!hasMatch(*value)) return false;
  }
  for (const Structure* item = pattern.getStructuredValues(); item;
       item = item->getNextSiblingElement()) {
    if (!hasMatch(*item)) return false;
  }
  return true;
}

bool ListImp::hasMatch(const Scalar& pattern) const {
  const auto* value = firstTypedChild<ScalarImp>(*this);
  while (value && !value->match(pattern)) value = nextTypedSibling(*value);
  return value != nullptr;
}

bool ListImp::hasMatch(const Structure& pattern) const {
  const auto* item = firstTypedChild<StructureImp>(*this);
  while (item && !item->match(pattern)) item = nextTypedSibling(*item);
  return item != nullptr;
}

ListImp* ListImp::getNextSiblingElement() const { return nextTypedSibling(*this); }

IElement* ListImp::getFirstChildElement(const char* name) const {
  return dynamic_cast<IElement*>(getFirstChild(name));
}

void ListImp::removeThisElement() { unlinkFromParent(); }

void ListImp::rebuildIndexersAndDispatchToChildren() {
  for (auto* item = firstTypedChild<StructureImp>(*this); item; item = nextTypedSibling(*item)) {
    item->rebuildIndexers();
  }
}

}  // namespace model
}  // namespace libtarn
