// A node class; hosts include it only to derive from it or to cast to it.
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
  /// Returns a deep copy. Its index and type are not filled: rebuildIndexersAndInitializeEnums()
  /// does that.
  LibTarnCmDataImp* clone(util::TarnFactory& factory) const override;
  /// Not to be called: logs an ERROR line and returns null.
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

  /// Renames a child without validating the name, and keeps the index consistent. When another
  /// child has the name, logs an ERROR line; this one is then in no index, until it gets a unique
  /// name or the other one is removed or renamed. Throws std::bad_alloc with nothing changed.
  void setMoDistName(LibTarnManagedObjectImp& object, const char* distName);
  /// Sets the attributes of a child, its keys included, in the way of setMoDistName(). Does not
  /// throw when prepareMoKeys() has been called for the same name.
  void setMoAttributes(LibTarnManagedObjectImp& object, StagedAttributes& attributes);
  /// Allocates what setting the name of a child to `distName`, or its class, may need.
  void prepareMoKeys(const LibTarnManagedObjectImp& object, const char* distName);
  /// Like removeLibTarnManagedObject(), but does not throw when there is no memory. A child that
  /// lost the name to the removed one then stays out of the index.
  std::uint8_t removeWithoutMemory(const DistinguishedName& distName);
  /// Throws DuplicateElementException when two children have the same name.
  void checkNames() const;
  /// Unlinks every indexed object and empties the index.
  void removeAllLibTarnManagedObjects();
  /// Reads the type and adds the managed objects to the index, each with its own indexes. Throws
  /// ModelException subclasses for a missing or unknown type and for the second object of one name;
  /// objects before it stay indexed.
  void rebuildIndexersAndInitializeEnums();
  /// Reads the type; the first step of rebuildIndexersAndInitializeEnums().
  void initializeType() { type_.initialize(); }
  /// Fills the indexes; the second step of rebuildIndexersAndInitializeEnums().
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
