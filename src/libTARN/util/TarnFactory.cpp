#include "libtarn/util/TarnFactory.hpp"

#include <utility>

#include "../text/attributeNames.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/DomFactory.hpp"
#include "libtarn/model/DistinguishedNameValidator.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/LogImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"

namespace libtarn {
namespace util {

using namespace model;

namespace {

constexpr const char* APP_INFO_ATTRIBUTE = "appInfo";

// Constructs a `Type` in `pool`.
template <class Type, class... Arguments>
Type* constructIn(libDomXml::IMemoryPool& pool, Arguments&&... arguments) {
  static_assert(alignof(Type) <= sizeof(void*), "a pool aligns to the size of a pointer");
  void* const memory = libDomXml::DomFactory(&pool).allocateObject(sizeof(Type));
  return new (memory) Type(std::forward<Arguments>(arguments)...);
}

}  // namespace

TarnFactory::TarnFactory(libDomXml::IMemoryPool& pool) : TarnFactory(pool, nullptr, nullptr) {}

TarnFactory::TarnFactory(libDomXml::IMemoryPool& pool, const IDistinguishedNameValidator* validator,
                         const indexation::ITarnIndexFactory* indexFactory)
    : pool_(pool),
      distNameValidator_(validator ? validator : constructIn<DistinguishedNameValidator>(pool)),
      indexFactory_(indexFactory ? indexFactory
                                 : constructIn<indexation::TarnIndexFactory>(pool, pool)) {}

LibTarnCmData* TarnFactory::createLibTarnCmData(LibTarnCmData::Type type) {
  auto* const cmData = static_cast<LibTarnCmDataImp*>(allocateTarnCmDataNode());
  cmData->setType(type);
  return cmData;
}

LibTarnHeader* TarnFactory::createLibTarnHeader() { return allocateHeaderNode(); }

LibTarnManagedObject* TarnFactory::createLibTarnManagedObject(const char* className,
                                                              const char* distName,
                                                              const char* version) {
  auto* const object = static_cast<LibTarnManagedObjectImp*>(allocateTarnManagedObjectNode());
  object->setAttribute(CLASS_ATTRIBUTE, className);
  if (object->setDistName(distName) != 0) return nullptr;
  if (version) object->setAttribute(VERSION_ATTRIBUTE, version);
  return object;
}

LibTarnManagedObject* TarnFactory::createLibTarnManagedObject(
    const char* className, const char* distName, const LibTarnManagedObject::Operation& operation,
    const char* version) {
  LibTarnManagedObject* const object = createLibTarnManagedObject(className, distName, nullptr);
  if (!object) return nullptr;
  object->setOperation(operation);
  if (version) object->setVersion(version);
  return object;
}

LibTarnManagedObject* TarnFactory::createLibTarnManagedObject(
    const char* className, const DistinguishedName& distName,
    const LibTarnManagedObject::Operation& operation, const char* version) {
  return createLibTarnManagedObject(className, distName.getText(), operation, version);
}

LibTarnManagedObject* TarnFactory::createCopy(const LibTarnManagedObject& object) {
  auto* const copy = dynamic_cast<LibTarnManagedObject*>(object.clone(*this));
  TARN_ASSERT(copy, "copy of a managed object");
  return copy;
}

Scalar* TarnFactory::createScalar(const char* name, const char* value) {
  ScalarImp* const scalar = allocateScalarNode();
  if (name) scalar->setAttribute(NAME_ATTRIBUTE, name);
  if (value) scalar->setValue(value);
  return scalar;
}

List* TarnFactory::createList(const char* name) {
  ListImp* const list = allocateListNode();
  list->setAttribute(NAME_ATTRIBUTE, name);
  return list;
}

Structure* TarnFactory::createStructure() {
  return static_cast<StructureImp*>(allocateStructureNode());
}

LibTarnExtension* TarnFactory::createLibTarnExtension(const char* name) {
  LibTarnExtensionImp* const extension = allocateExtensionNode();
  extension->setAttribute(NAME_ATTRIBUTE, name);
  return extension;
}

Log* TarnFactory::createLog(const char* action, const char* appInfo, const char* value) {
  LogImp* const log = allocateLogNode();
  log->updateDateTime();
  log->setAttribute(ACTION_ATTRIBUTE, action);
  if (value) log->setValue(value);
  if (appInfo) log->setAttribute(APP_INFO_ATTRIBUTE, appInfo);
  return log;
}

TarnDomElement* TarnFactory::allocateTarnManagedObjectNode() {
  return constructIn<LibTarnManagedObjectImp>(pool_, &pool_, distNameValidator_, indexFactory_,
                                              *this);
}

TarnDomElement* TarnFactory::allocateTarnCmDataNode() {
  return constructIn<LibTarnCmDataImp>(pool_, &pool_, indexFactory_, *this);
}

TarnDomElement* TarnFactory::allocateStructureNode() {
  return constructIn<StructureImp>(pool_, &pool_, indexFactory_, *this);
}

TarnDomElement* TarnFactory::allocateLibTarnDocumentInternalNode(TarnDomDocument* document) {
  return constructIn<LibTarnDocumentInternal>(pool_, document);
}

LibTarnHeaderImp* TarnFactory::allocateHeaderNode() {
  return constructIn<LibTarnHeaderImp>(pool_, &pool_, *this);
}

LogImp* TarnFactory::allocateLogNode() { return constructIn<LogImp>(pool_, &pool_, *this); }

ListImp* TarnFactory::allocateListNode() { return constructIn<ListImp>(pool_, &pool_, *this); }

ScalarImp* TarnFactory::allocateScalarNode() {
  return constructIn<ScalarImp>(pool_, &pool_, *this);
}

LibTarnExtensionImp* TarnFactory::allocateExtensionNode() {
  return constructIn<LibTarnExtensionImp>(pool_, &pool_, *this);
}

}  // namespace util
}  // namespace libtarn
