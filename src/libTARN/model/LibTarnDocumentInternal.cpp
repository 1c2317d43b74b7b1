#include "model/LibTarnDocumentInternal.hpp"

#include <cstring>

#include "../util/LogLocation.hpp"
#include "../util/forbiddenClone.hpp"
#include "IndexingParse.hpp"
#include "attributeNames.hpp"
#include "model/LibTarnCmDataImp.hpp"
#include "model/LibTarnManagedObject.hpp"
#include "model/TarnDomDocument.hpp"
#include "model/TypedChildren.hpp"
#include "model/exceptions/ModelException.hpp"
#include "model/validation/Validator.hpp"
#include "util/Logger.hpp"

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

bool LibTarnDocumentInternal::parse(const char* text, bool check) {
  TARN_ASSERT(text, "text");
  std::vector<char> copy(text, text + std::strlen(text) + 1);
  return parse(copy, check);
}

bool LibTarnDocumentInternal::parse(std::vector<char>& text, bool check) {
  IndexingParse indexing;
  indexing.followsRules = check;
  document_->parseAndIndex(text, indexing);
  util::Logger(util::Logger::Level::DEBUG, TARN_LOG_LOCATION, "parse") << "Parsing done";
  const bool followsRules = finishParsing(indexing);
  tellRebuilt();
  return followsRules;
}

bool LibTarnDocumentInternal::check(std::vector<char>& text) {
  IndexingParse indexing;
  indexing.followsRules = true;
  indexing.forgetsObjects = true;
  try {
    document_->parseAndIndex(text, indexing);
  } catch (const IndexingParse::Unknown&) {
    return false;
  }
  return finishParsing(indexing);
}

bool LibTarnDocumentInternal::finishParsing(const IndexingParse& indexing) {
  bool followsRules = indexing.followsRules;
  forEachCmData([&indexing, &followsRules](LibTarnCmDataImp& cmData) {
    if (!cmData.finishParsing(indexing)) followsRules = false;
  });
  return followsRules;
}

void LibTarnDocumentInternal::rebuildIndexersAndInitializeEnums() {
  forEachCmData([](LibTarnCmDataImp& cmData) { cmData.rebuildIndexersAndInitializeEnums(); });
  tellRebuilt();
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

void LibTarnDocumentInternal::tellRebuilt() {
  util::Logger(util::Logger::Level::DEBUG, TARN_LOG_LOCATION, "rebuildIndexersAndInitializeEnums")
      << "Rebuilding indexers and initializing enums done.";
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
  const LibTarnCmData* const cmData = getLibTarnCmData();
  if (!cmData) return;
  // A copy: a change may give an object another place in the index.
  const indexation::ManagedObjectCollection indexed = cmData->getLibTarnManagedObjects();
  const std::list<LibTarnManagedObject*> objects(indexed.begin(), indexed.end());
  util::Logger(util::Logger::Level::INFO, TARN_LOG_LOCATION, "setChangesToMOs")
      << "LibTarnCmData retrivied.";
  for (LibTarnManagedObject* object : objects) {
    const bool matches = object->match(mask);
    util::Logger(util::Logger::Level::INFO, TARN_LOG_LOCATION, "setChangesToMOs")
        << "MO with DN: " << object->getDistName()
        << (matches ? " match the mask." : " doesn't match the mask.");
    if (matches) object->change(mask, changes);
  }
}

}  // namespace model
}  // namespace libtarn
