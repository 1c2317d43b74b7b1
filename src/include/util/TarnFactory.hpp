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
/// The document's own factory comes from LibTarnDocument::getFactory(). A host may build one over
/// any pool that has memory; everything built lives as long as that pool, and the factory must live
/// as long as what it built. Texts are copied. One thread at a time.
class TARN_API TarnFactory {
 public:
  /// With a DistinguishedNameValidator and a TarnIndexFactory of its own in `pool`.
  explicit TarnFactory(libDomXml::IMemoryPool& pool);
  /// Validator and index factory stay the caller's and must outlive what is built; null for one as
  /// above.
  TarnFactory(libDomXml::IMemoryPool& pool, const model::IDistinguishedNameValidator* validator,
              const model::indexation::ITarnIndexFactory* indexFactory);

  /// Empty elements.
  model::LibTarnCmData* createLibTarnCmData(model::LibTarnCmData::Type type);
  model::LibTarnHeader* createLibTarnHeader();
  /// Null when `distName` is not a valid name. `version` may be null.
  model::LibTarnManagedObject* createLibTarnManagedObject(const char* className,
                                                          const char* distName,
                                                          const char* version);
  model::LibTarnManagedObject* createLibTarnManagedObject(
      const char* className, const char* distName,
      const model::LibTarnManagedObject::Operation& operation, const char* version);
  model::LibTarnManagedObject* createLibTarnManagedObject(
      const char* className, const model::DistinguishedName& distName,
      const model::LibTarnManagedObject::Operation& operation, const char* version);
  /// A deep, detached copy of an object of any document, as LibTarnManagedObject::clone() makes it,
  /// with its exceptions.
  model::LibTarnManagedObject* createCopy(const model::LibTarnManagedObject& object);
  /// A null name or value is left out.
  model::Scalar* createScalar(const char* name, const char* value);
  /// An empty list, item or extension; a null name counts as "".
  model::List* createList(const char* name);
  model::Structure* createStructure();
  model::LibTarnExtension* createLibTarnExtension(const char* name);
  /// An entry with the current time. A null `appInfo` or `value` is left out.
  model::Log* createLog(const char* action, const char* appInfo, const char* value);

  /// Empty nodes, as the parser takes them: tag set, no attributes.
  model::TarnDomElement* allocateTarnManagedObjectNode();
  model::TarnDomElement* allocateTarnCmDataNode();
  model::TarnDomElement* allocateStructureNode();
  model::TarnDomElement* allocateLibTarnDocumentInternalNode(model::TarnDomDocument* document);
  model::LibTarnHeaderImp* allocateHeaderNode();
  model::LogImp* allocateLogNode();
  model::ListImp* allocateListNode();
  model::ScalarImp* allocateScalarNode();
  model::LibTarnExtensionImp* allocateExtensionNode();

  /// The pool that everything is built in.
  libDomXml::IMemoryPool& getMemoryPool() const { return pool_; }
  /// What every managed object, and every element with indexes, is given; never null.
  const model::IDistinguishedNameValidator* getDistNameValidator() const {
    return distNameValidator_;
  }
  const model::indexation::ITarnIndexFactory* getIndexFactory() const { return indexFactory_; }

 private:
  libDomXml::IMemoryPool& pool_;
  const model::IDistinguishedNameValidator* distNameValidator_;
  const model::indexation::ITarnIndexFactory* indexFactory_;
};

}  // namespace util
}  // namespace libtarn
