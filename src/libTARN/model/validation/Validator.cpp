#include "libtarn/model/validation/Validator.hpp"

#include <cstring>
#include <stdexcept>

#include "libtarn/Assertion.hpp"
#include "libtarn/model/IDistinguishedNameValidator.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/LogImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/exceptions/InvalidAttributeValueException.hpp"
#include "libtarn/model/exceptions/InvalidChildCountException.hpp"
#include "libtarn/model/exceptions/InvalidDistinguishedNameException.hpp"
#include "libtarn/model/exceptions/NoElementValueException.hpp"
#include "libtarn/model/exceptions/NoSuchAttributeException.hpp"
#include "libtarn/model/validation/Violation.hpp"
#include "rules.hpp"

namespace libtarn {
namespace model {
namespace validation {

Validator::~Validator() = default;

// The path

void Validator::appendToPath(const char* tagName, const char* id) {
  if (!tagName) throw std::invalid_argument("tagName must not be 0");
  pathStack_.push_back({tagName, id});
}

void Validator::popPath() {
  if (pathStack_.empty()) throw std::logic_error("Cannot pop path:  path stack is empty");
  pathStack_.pop_back();
}

std::string Validator::getPath() const {
  std::string path;
  for (const PathEntry& entry : pathStack_) {
    path += entry.tagName;
    if (entry.id) path.append(":").append(entry.id);
    path += " > ";
  }
  return path;
}

// The rules

// Calls `makeException`, and so builds the message, only when the violation is recorded or thrown.
template <class MakeException>
void Validator::report(MakeException makeException) const {
#ifdef TARN_NO_COLLECTOR
  TARN_ASSERT(!collector_, "this build has no collector");
#else
  if (collector_) {
    const bool isCollected = violationCount_++ < limit_ && byteCount_ < byteLimit_;
    if (!isCollected) return;
    collector_->push_back({makeException().what(), getPath()});
    byteCount_ += collector_->back().message.size() + collector_->back().path.size();
    return;
  }
#endif
  throw makeException();
}

void Validator::validateAttribute(const libDomXml::IDomElement& element, const char* name,
                                  const char* expected) const {
  require(element, name, [expected](const char* value) {
    return value && (!expected || std::strcmp(expected, value) == 0);
  });
}

template <class Rule>
void Validator::require(const libDomXml::IDomElement& element, const char* name,
                        Rule isKept) const {
  const char* const value = element.getAttribute(name);
  if (isKept(value)) return;
  if (!value) {
    return report(
        [&] { return exceptions::NoSuchAttributeException::instance(getPath().c_str(), name); });
  }
  report([&] {
    return exceptions::InvalidAttributeValueException::instance(getPath().c_str(), name, value);
  });
}

void Validator::validateValue(const libDomXml::IDomElement& element) const {
  if (element.getValue()) return;
  report([&] { return exceptions::NoElementValueException::instance(getPath().c_str()); });
}

void Validator::validateDistinguishedName(const LibTarnManagedObjectImp& object) {
  require(object, DistinguishedName::ATTR_NAME, rules::objectHasName);
  const char* const distName = object.getAttribute(DistinguishedName::ATTR_NAME);
  if (!distName || rules::objectHasValidName(*object.getDistNameValidator(), distName)) return;
  report([&] { return exceptions::InvalidDistinguishedNameException(distName); });
}

void Validator::validateChildrenType(const ListImp& list) {
  if (rules::listHoldsOneKind(list.hasScalarValues(), list.hasStructuredValues())) return;
  report([&] {
    return exceptions::ModelException("The '" + getPath() + "' has both '" + Scalar::TAG_NAME +
                                      "' and '" + Structure::TAG_NAME + "' children");
  });
}

template <class Child>
void Validator::validateChildCount(const IElement& element, std::size_t minCount,
                                   std::size_t maxCount) const {
  TARN_ASSERT(minCount <= maxCount, "minCount <= maxCount");
  requireChildCount<Child>(element, minCount, maxCount, [minCount, maxCount](std::size_t count) {
    return count >= minCount && count <= maxCount;
  });
}

template <class Child, class Rule>
void Validator::requireChildCount(const IElement& element, std::size_t minCount,
                                  std::size_t maxCount, Rule isKept) const {
  std::size_t count = 0;
  const IElement* child = element.getFirstChildElement(Child::TAG_NAME);
  while (child && count <= maxCount) {
    ++count;
    child = child->getNextSiblingElement();
  }
  if (isKept(count)) return;
  report([&] {
    return exceptions::InvalidChildCountException::instance(Child::TAG_NAME, getPath().c_str(),
                                                            minCount, maxCount, count);
  });
}

template <class Child>
void Validator::validateAtLeastOneChild(const IElement& element) const {
  if (!element.getFirstChildElement(Child::TAG_NAME)) reportNoChild<Child>();
}

template <class Child>
void Validator::reportNoChild() const {
  report([&] {
    return exceptions::InvalidChildCountException::instance(Child::TAG_NAME, getPath().c_str(), 1,
                                                            1, 0);
  });
}

template void Validator::validateChildCount<LibTarnCmDataImp>(const IElement&, std::size_t,
                                                              std::size_t) const;
template void Validator::validateChildCount<LibTarnHeaderImp>(const IElement&, std::size_t,
                                                              std::size_t) const;
template void Validator::validateAtLeastOneChild<LibTarnManagedObjectImp>(const IElement&) const;

// The elements

void Validator::visit(const LibTarnDocumentInternal& root) {
  require(root, VERSION_ATTRIBUTE, rules::rootHasVersion);
  require(root, XMLNS_ATTRIBUTE, rules::rootHasNamespace);
  requireChildCount<LibTarnCmDataImp>(root, 1, 1, rules::rootHasOneBody);
}

void Validator::visit(const LibTarnCmDataImp& cmData) {
  requireChildCount<LibTarnHeaderImp>(cmData, 1, 1, rules::bodyHasOneHeader);
  const bool isPlan = cmData.getType() == LibTarnCmData::Type::PLAN;
  const bool hasObject = cmData.getFirstChildElement(LibTarnManagedObject::TAG_NAME) != nullptr;
  if (!rules::planHasObjects(isPlan, hasObject)) reportNoChild<LibTarnManagedObjectImp>();
}

void Validator::visit(const LibTarnHeaderImp& /*header*/) {}

void Validator::visit(const LogImp& log) {
  require(log, DATE_TIME_ATTRIBUTE, rules::logHasTime);
  require(log, ACTION_ATTRIBUTE, rules::logHasAction);
}

void Validator::visit(const LibTarnManagedObjectImp& object) {
  nameRequired_ = true;
  require(object, CLASS_ATTRIBUTE, rules::objectHasClass);
  validateDistinguishedName(object);
}

void Validator::visit(const LibTarnExtensionImp& /*extension*/) { nameRequired_ = true; }

void Validator::visit(const ListImp& list) {
  nameRequired_ = false;
  require(list, NAME_ATTRIBUTE, rules::listHasName);
  validateChildrenType(list);
}

void Validator::visit(const StructureImp& /*structure*/) { nameRequired_ = true; }

void Validator::visit(const ScalarImp& scalar) {
  if (nameRequired_) require(scalar, NAME_ATTRIBUTE, rules::parameterHasName);
}

}  // namespace validation
}  // namespace model
}  // namespace libtarn
