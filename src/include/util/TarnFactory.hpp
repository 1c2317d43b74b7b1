#pragma once

#include "libtarn/IMemoryPool.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace libtarn {
namespace model {

class IDistinguishedNameValidator;
class LibTarnExtension;
class LibTarnExtensionImp;
class LibTarnHeader;
class LibTarnHeaderImp;
class List;
class ListImp;
class Log;
class LogImp;
class Scalar;
class ScalarImp;
class Structure;
class TarnDomDocument;
class TarnDomElement;

namespace indexation {
class ITarnIndexFactory;
}

}  // namespace model

namespace util {

/// Builds the elements of one document, in its pool, detached.
///
/// A document's own factory comes from LibTarnDocument::getFactory(). A host may build one over any
/// pool that has memory. Everything built lives as long as that pool; the factory must live as long
/// as what it built. Texts are copied. Used by one thread at a time.
class TARN_API TarnFactory {
 public:
  /// A factory with a DistinguishedNameValidator and a TarnIndexFactory of its own in `pool`.
  explicit TarnFactory(libDomXml::IMemoryPool& pool);
  /// A factory with the caller's validator and index factory, which must outlive what is built. For
  /// null it has one of its own in `pool`.
  TarnFactory(libDomXml::IMemoryPool& pool, const model::IDistinguishedNameValidator* validator,
              const model::indexation::ITarnIndexFactory* indexFactory);

  /// Returns a body of that type, without children.
  model::LibTarnCmData* createLibTarnCmData(model::LibTarnCmData::Type type);
  /// Returns a header without entries.
  model::LibTarnHeader* createLibTarnHeader();
  /// Returns an object without operation, or null when `distName` is not a valid name. `version`
  /// may be null: none.
  model::LibTarnManagedObject* createLibTarnManagedObject(const char* className,
                                                          const char* distName,
                                                          const char* version);
  /// Returns an object with an operation, or null when `distName` is not a valid name. `version`
  /// may be null: none.
  model::LibTarnManagedObject* createLibTarnManagedObject(
      const char* className, const char* distName,
      const model::LibTarnManagedObject::Operation& operation, const char* version);
  /// Returns an object with an operation, or null when `distName` is not a valid name. `version`
  /// may be null: none.
  model::LibTarnManagedObject* createLibTarnManagedObject(
      const char* className, const model::DistinguishedName& distName,
      const model::LibTarnManagedObject::Operation& operation, const char* version);
  /// Returns a deep, detached copy of an object of any document, made by
  /// LibTarnManagedObject::clone(), and throws what that throws.
  model::LibTarnManagedObject* createCopy(const model::LibTarnManagedObject& object);
  /// Returns a parameter. `name` and `value` may be null: none.
  model::Scalar* createScalar(const char* name, const char* value);
  /// Returns an empty list; a null name counts as "".
  model::List* createList(const char* name);
  /// Returns an empty item.
  model::Structure* createStructure();
  /// Returns an empty extension; a null name counts as "".
  model::LibTarnExtension* createLibTarnExtension(const char* name);
  /// Returns an entry with the current time. `appInfo` and `value` may be null: none. Each call
  /// emits a log line at level ERROR, as Log::updateDateTime() does.
  model::Log* createLog(const char* action, const char* appInfo, const char* value);

  /// Returns a node as the parser takes it: tag set, no attributes.
  model::TarnDomElement* allocateTarnManagedObjectNode();
  /// Returns a node as the parser takes it: tag set, no attributes.
  model::TarnDomElement* allocateTarnCmDataNode();
  /// Returns a node as the parser takes it: tag set, no attributes.
  model::TarnDomElement* allocateStructureNode();
  /// Returns a root for `document`: tag set, no attributes.
  model::TarnDomElement* allocateLibTarnDocumentInternalNode(model::TarnDomDocument* document);
  /// Returns a node as the parser takes it: tag set, no attributes.
  model::LibTarnHeaderImp* allocateHeaderNode();
  /// Returns a node as the parser takes it: tag set, no attributes.
  model::LogImp* allocateLogNode();
  /// Returns a node as the parser takes it: tag set, no attributes.
  model::ListImp* allocateListNode();
  /// Returns a node as the parser takes it: tag set, no attributes.
  model::ScalarImp* allocateScalarNode();
  /// Returns a node as the parser takes it: tag set, no attributes.
  model::LibTarnExtensionImp* allocateExtensionNode();

  /// Returns the pool that everything is built in.
  libDomXml::IMemoryPool& getMemoryPool() const { return pool_; }
  /// Returns the name validator that every managed object gets; never null.
  const model::IDistinguishedNameValidator* getDistNameValidator() const {
    return distNameValidator_;
  }
  /// Returns the index factory that every element with indexes gets; never null.
  const model::indexation::ITarnIndexFactory* getIndexFactory() const { return indexFactory_; }

 private:
  libDomXml::IMemoryPool& pool_;
  const model::IDistinguishedNameValidator* distNameValidator_;
  const model::indexation::ITarnIndexFactory* indexFactory_;
};

}  // namespace util
}  // namespace libtarn
