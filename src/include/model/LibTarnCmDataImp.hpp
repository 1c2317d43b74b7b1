#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/EnumeratedAttribute.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/ModelNode.hpp"
#include "libtarn/model/indexation/ITarnUniqueAndNonUniqueMultiIndex.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

namespace indexation {
class ITarnIndexFactory;
template <class Order>
class ObjectView;
struct SharedKeyOrder;
}  // namespace indexation

struct Internals;
class LibTarnManagedObjectImp;
struct StagedAttributes;

/// Node class of LibTarnCmData.
class TARN_API LibTarnCmDataImp : public ModelNode, public LibTarnCmData {
 public:
  LibTarnCmDataImp(libDomXml::IMemoryPool* pool, const indexation::ITarnIndexFactory* indexFactory,
                   util::TarnFactory& factory);

  using ModelNode::clone;
  LibTarnCmDataImp* clone() const override;
  /// The copy's index and type are not filled: rebuildIndexersAndInitializeEnums() does it.
  LibTarnCmDataImp* clone(util::TarnFactory& factory) const override;
  /// Not to be used: logs an ERROR line and returns null.
  LibTarnCmDataImp* clone(libDomXml::IDomDocument* document) const;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  Type getType() const override;
  void setType(const Type& type) override;
  const char* getId() const override;
  LibTarnHeader* getLibTarnHeader() const override;
  void setLibTarnHeader(LibTarnHeader& header) override;
  bool hasLibTarnManagedObject(const DistinguishedName& distName) const override;
  LibTarnManagedObject* getLibTarnManagedObject(const DistinguishedName& distName) const override;
  indexation::ManagedObjectCollection getLibTarnManagedObjects() const override;
  void addLibTarnManagedObject(LibTarnManagedObject& object) override;
  std::uint8_t removeLibTarnManagedObject(const DistinguishedName& distName) override;
  LibTarnCmDataImp* getNextSiblingElement() const override;
  indexation::ManagedObjectCollection getLibTarnManagedObjectsByClass(
      const std::string& className) const override;
  IElement* getFirstChildElement(const char* name) const override;
  void removeThisElement() override;
  std::size_t getManagedObjectNumber() const override;

  /// Renames a child without checking the name, and keeps the index in step. When another child has
  /// the name, an ERROR line says so, and this one is in no index until it gets a name of its own
  /// or the other one goes. When std::bad_alloc is thrown, nothing has changed.
  void setMoDistName(LibTarnManagedObjectImp& object, const char* distName);
  /// Sets the attributes of a child, its keys among them, as setMoDistName() says. Throws nothing
  /// when prepareMoKeys() has been called for the same name before.
  void setMoAttributes(LibTarnManagedObjectImp& object, StagedAttributes& attributes);
  /// Takes the memory that it needs to give a child the name `distName`, or another class with the
  /// name that it has.
  void prepareMoKeys(const LibTarnManagedObjectImp& object, const char* distName);
  /// As removeLibTarnManagedObject(), but does not throw when there is no memory. A child that lost
  /// the name then stays out of the index.
  std::uint8_t removeWithoutMemory(const DistinguishedName& distName);
  /// Throws DuplicateElementException when two children have one name.
  void checkNames() const;
  /// Unlinks every indexed object and empties the index.
  void removeAllLibTarnManagedObjects();
  /// Reads the type and takes the managed objects into the index, each with its own indexes.
  /// Throws ModelException subclasses for a missing or unknown type and for the second object of
  /// one name; objects before it stay indexed.
  void rebuildIndexersAndInitializeEnums();
  /// The two halves of it.
  void initializeType() { type_.initialize(); }
  void rebuildIndexers();

 protected:
  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override;

 private:
  friend struct Internals;
  using Unindexed = indexation::ObjectView<indexation::SharedKeyOrder>;

  bool isIndexed(const LibTarnManagedObjectImp& object) const;
  template <class Predicate>
  indexation::ManagedObjectEntry findUnindexed(const char* distName, Predicate isIt) const;
  indexation::ManagedObjectEntry findChildThatLost(const char* distName) const;
  void indexUnindexed(const char* distName);
  void prepareUnindexed();
  void rememberUnindexed(LibTarnManagedObjectImp& object);
  void forgetUnindexed(const LibTarnManagedObjectImp& object, const char* distName);
  bool addAllChildren();

  EnumeratedAttribute<Type> type_;
  const indexation::ITarnIndexFactory* indexFactory_;
  indexation::ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>* managedObjectIndex_;
  Unindexed* unindexed_ = nullptr;  // children that lost their names to others, by these names
};

}  // namespace model
}  // namespace libtarn
