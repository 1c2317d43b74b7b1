#include "model/validation/Validator.hpp"

#include <cstring>
#include <stdexcept>

#include "../attributeNames.hpp"
#include "Assertion.hpp"
#include "model/IDistinguishedNameValidator.hpp"
#include "model/LibTarnCmDataImp.hpp"
#include "model/LibTarnDocumentInternal.hpp"
#include "model/LibTarnExtensionImp.hpp"
#include "model/LibTarnHeaderImp.hpp"
#include "model/LibTarnManagedObjectImp.hpp"
#include "model/ListImp.hpp"
#include "model/LogImp.hpp"
#include "model/ScalarImp.hpp"
#include "model/StructureImp.hpp"
#include "model/exceptions/InvalidAttributeValueException.hpp"
#include "model/exceptions/InvalidChildCountException.hpp"
#include "model/exceptions/InvalidDistinguishedNameException.hpp"
#include "model/exceptions/NoElementValueException.hpp"
#include "model/exceptions/NoSuchAttributeException.hpp"
#include "model/validation/Violation.hpp"

namespace libtarn {
namespace model {
namespace validation {

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

// Makes the exception, and so the message, only when somebody gets it.
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
  const char* const value = element.getAttribute(name);
  if (!value) {
    return report(
        [&] { return exceptions::NoSuchAttributeException::instance(getPath().c_str(), name); });
  }
  if (!expected || std::strcmp(expected, value) == 0) return;
  report([&] {
    return exceptions::InvalidAttributeValueException::instance(getPath().c_str(), name, value);
  });
}

void Validator::validateValue(const libDomXml::IDomElement& element) const {
  if (element.getValue()) return;
  report([&] { return exceptions::NoElementValueException::instance(getPath().c_str()); });
}

void Validator::validateDistinguishedName(const LibTarnManagedObjectImp& object) {
  validateAttribute(object, DistinguishedName::ATTR_NAME, nullptr);
  const char* const distName = object.getAttribute(DistinguishedName::ATTR_NAME);
  if (!distName || object.getDistNameValidator()->isValid(distName)) return;
  report([&] { return exceptions::InvalidDistinguishedNameException(distName); });
}

void Validator::validateChildrenType(const ListImp& list) {
  if (!list.hasScalarValues() || !list.hasStructuredValues()) return;
  report([&] {
    return exceptions::ModelException("The '" + getPath() + "' has both '" + Scalar::TAG_NAME +
                                      "' and '" + Structure::TAG_NAME + "' children");
  });
}

template <class Child>
void Validator::validateChildCount(const IElement& element, std::size_t minCount,
                                   std::size_t maxCount) const {
  TARN_ASSERT(minCount <= maxCount, "minCount <= maxCount");
  std::size_t count = 0;
  const IElement* child = element.getFirstChildElement(Child::TAG_NAME);
  while (child && count <= maxCount) {
    ++count;
    child = child->getNextSiblingElement();
  }
  if (count >= minCount && count <= maxCount) return;
  report([&] {
    return exceptions::InvalidChildCountException::instance(Child::TAG_NAME, getPath().c_str(),
                                                            minCount, maxCount, count);
  });
}

template <class Child>
void Validator::validateAtLeastOneChild(const IElement& element) const {
  if (element.getFirstChildElement(Child::TAG_NAME)) return;
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
  validateAttribute(root, VERSION_ATTRIBUTE, nullptr);
  validateAttribute(root, XMLNS_ATTRIBUTE, XMLNS);
  validateChildCount<LibTarnCmDataImp>(root, 1, 1);
}

void Validator::visit(const LibTarnCmDataImp& cmData) {
  validateChildCount<LibTarnHeaderImp>(cmData, 1, 1);
  if (cmData.getType() == LibTarnCmData::Type::PLAN) {
    validateAtLeastOneChild<LibTarnManagedObjectImp>(cmData);
  }
}

void Validator::visit(const LibTarnHeaderImp& /*header*/) {}

void Validator::visit(const LogImp& log) {
  validateAttribute(log, DATE_TIME_ATTRIBUTE, nullptr);
  validateAttribute(log, ACTION_ATTRIBUTE, nullptr);
}

void Validator::visit(const LibTarnManagedObjectImp& object) {
  nameRequired_ = true;
  validateAttribute(object, CLASS_ATTRIBUTE, nullptr);
  validateDistinguishedName(object);
}

void Validator::visit(const LibTarnExtensionImp& /*extension*/) { nameRequired_ = true; }

void Validator::visit(const ListImp& list) {
  nameRequired_ = false;
  validateAttribute(list, NAME_ATTRIBUTE, nullptr);
  validateChildrenType(list);
}

void Validator::visit(const StructureImp& /*structure*/) { nameRequired_ = true; }

void Validator::visit(const ScalarImp& scalar) {
  if (nameRequired_) validateAttribute(scalar, NAME_ATTRIBUTE, nullptr);
}

}  // namespace validation
}  // namespace model
}  // namespace libtarn
