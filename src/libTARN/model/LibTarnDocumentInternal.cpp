#include "libtarn/model/LibTarnDocumentInternal.hpp"

#include <cstring>
#include <utility>

#include "../text/attributeNames.hpp"
#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "TypedChildren.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/model/RefusedChange.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "libtarn/util/Logger.hpp"
#include "load/Load.hpp"

namespace libtarn {
namespace model {

LibTarnDocumentInternal::LibTarnDocumentInternal(TarnDomDocument* document)
    : TarnDomElement(document), document_(document) {
  xml_base::name(TAG_NAME);
  setAttribute(XMLNS_ATTRIBUTE, XMLNS);
  setAttribute(VERSION_ATTRIBUTE, "2.1");
}

libDomXml::IDomElement* LibTarnDocumentInternal::clone(libDomXml::IMemoryPool* /*pool*/) const {
  throw exceptions::ModelException("Cannot clone TARN document to other memory pool.");
}

TarnDomElement* LibTarnDocumentInternal::clone(util::TarnFactory& /*factory*/) const {
  util::logForbiddenClone(TARN_LOG_LOCATION,
                          "LibTarnDocumentInternal::clone(util::TarnFactory& factory)");
  return nullptr;
}

void LibTarnDocumentInternal::dispatchToChildren(validation::Validator& validator) const {
  for (auto* cmData = firstTypedChild<LibTarnCmDataImp>(*this); cmData;
       cmData = nextTypedSibling(*cmData)) {
    cmData->accept(validator);
  }
}

void LibTarnDocumentInternal::dispatchToSelf(validation::Validator& validator) const {
  validator.visit(*this);
}

void LibTarnDocumentInternal::updatePath(validation::Validator& validator) const {
  validator.appendToPath(TAG_NAME, nullptr);
}

IElement* LibTarnDocumentInternal::getNextSiblingElement() const { return nextTypedSibling(*this); }

IElement* LibTarnDocumentInternal::getFirstChildElement(const char* name) const {
  return dynamic_cast<IElement*>(getFirstChild(name));
}

void LibTarnDocumentInternal::removeThisElement() {}

void LibTarnDocumentInternal::parse(const char* text) {
  TARN_ASSERT(text, "text");
  std::vector<char> copy(text, text + std::strlen(text) + 1);
  parse(copy);
}

void LibTarnDocumentInternal::parse(std::vector<char>& text) {
  Load(*document_, Load::Mode::INDEX).run(text);
}

void LibTarnDocumentInternal::rebuildIndexersAndInitializeEnums() {
  forEachCmData([](LibTarnCmDataImp& cmData) { cmData.rebuildIndexersAndInitializeEnums(); });
  util::Logger(util::Logger::Level::DEBUG, TARN_LOG_LOCATION, "rebuildIndexersAndInitializeEnums")
      << "Rebuilding indexers and initializing enums done.";
}

template <class Rebuild>
void LibTarnDocumentInternal::forEachCmData(Rebuild rebuild) {
  for (auto* cmData = firstTypedChild<LibTarnCmDataImp>(*this); cmData;
       cmData = nextTypedSibling(*cmData)) {
    rebuild(*cmData);
  }
}

void LibTarnDocumentInternal::checkNames() {
  forEachCmData([](const LibTarnCmDataImp& cmData) { cmData.checkNames(); });
}

const char* LibTarnDocumentInternal::getVersion() const { return getAttribute(VERSION_ATTRIBUTE); }

const char* LibTarnDocumentInternal::getXmlns() const { return getAttribute(XMLNS_ATTRIBUTE); }

LibTarnCmData* LibTarnDocumentInternal::getLibTarnCmData() const {
  return firstTypedChild<LibTarnCmDataImp>(*this);
}

void LibTarnDocumentInternal::addLibTarnCmData(LibTarnCmData& cmData) {
  addChild(&implementation<LibTarnCmDataImp>(cmData));
}

std::list<LibTarnManagedObject*> LibTarnDocumentInternal::getMOsMatchingMask(
    const LibTarnManagedObject& mask) const {
  std::list<LibTarnManagedObject*> matching;
  const LibTarnCmData* const cmData = getLibTarnCmData();
  if (!cmData) return matching;
  for (LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
    if (object->match(mask)) matching.push_back(object);
  }
  return matching;
}

void LibTarnDocumentInternal::setChangesToMOs(const LibTarnManagedObject& mask,
                                              const LibTarnManagedObject& changes) {
  changeMatching(mask, [&](LibTarnManagedObject& object) {
    object.change(mask, changes);
    return true;
  });
}

void LibTarnDocumentInternal::tryChangesToMOs(const LibTarnManagedObject& mask,
                                              const LibTarnManagedObject& changes,
                                              std::vector<RefusedChange>& refused) {
  changeMatching(mask, [&](LibTarnManagedObject& object) {
    Diagnostic found = object.tryChange(mask, changes);
    const int code = found.code;
    if (code != ChangeResult::Done) refused.push_back({&object, std::move(found)});
    return code != ChangeResult::BrokenRule;
  });
}

// Until `change` returns false.
template <class Change>
void LibTarnDocumentInternal::changeMatching(const LibTarnManagedObject& mask, Change change) {
  const LibTarnCmData* const cmData = getLibTarnCmData();
  if (!cmData) return;
  // A copy: a change may move an object in the index.
  const indexation::ManagedObjectCollection indexed = cmData->getLibTarnManagedObjects();
  const std::list<LibTarnManagedObject*> objects(indexed.begin(), indexed.end());
  util::Logger(util::Logger::Level::INFO, TARN_LOG_LOCATION, "setChangesToMOs")
      << "LibTarnCmData retrivied.";
  for (LibTarnManagedObject* object : objects) {
    const bool matches = object->match(mask);
    util::Logger(util::Logger::Level::INFO, TARN_LOG_LOCATION, "setChangesToMOs")
        << "MO with DN: " << object->getDistName()
        << (matches ? " match the mask." : " doesn't match the mask.");
    if (matches && !change(*object)) return;
  }
}

}  // namespace model
}  // namespace libtarn
