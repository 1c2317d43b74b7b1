// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/EnumeratedAttribute.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/model/ModelNode.hpp"
#include "libtarn/model/UniqueContainer.hpp"
#include "libtarn/model/indexation/ITarnUniqueIndex.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

namespace indexation {
class ITarnIndexFactory;
}

class IDistinguishedNameValidator;
struct Internals;
struct StagedAttributes;
class UndoLog;

/// Node class of LibTarnManagedObject.
class TARN_API LibTarnManagedObjectImp : public ModelNode, public LibTarnManagedObject {
 public:
  /// Attribute that identifies an extension.
  static const char* const UNIQUE_CONTAINER_ID_ATTR_NAME;

  LibTarnManagedObjectImp(libDomXml::IMemoryPool* pool,
                          const IDistinguishedNameValidator* distNameValidator,
                          const indexation::ITarnIndexFactory* indexFactory,
                          util::TarnFactory& factory);

  using ModelNode::clone;
  LibTarnManagedObjectImp* clone() const override;
  LibTarnManagedObjectImp* clone(util::TarnFactory& factory) const override;
  /// Not to be called: logs an ERROR line and returns null.
  LibTarnManagedObjectImp* clone(libDomXml::IDomDocument* document) const;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  const char* getClass() const override;
  const char* getVersion() const override;
  DistinguishedName getDistName() const override;
  Operation getOperation() const override;
  void setOperation(Operation operation) override;
  void setVersion(const std::string& version) override;
  void clearOperation() override;
  bool hasScalarParameter(const std::string& name) const override;
  Scalar* getScalarParameter(const char* name) const override;
  indexation::ScalarCollection getScalarParameters() const override;
  std::uint8_t addParameter(Scalar& parameter) override;
  std::uint8_t removeScalarParameter(const std::string& name) override;
  bool hasListParameter(const std::string& name) const override;
  List* getListParameter(const std::string& name) const override;
  indexation::ListCollection getListParameters() const override;
  std::uint8_t addParameter(List& parameter) override;
  std::uint8_t removeListParameter(const std::string& name) override;
  bool hasExtension(const std::string& name) const override;
  LibTarnExtension* getExtension(const std::string& name) const override;
  LibTarnExtension* getExtensions() const override;
  std::uint8_t addParameter(LibTarnExtension& extension) override;
  std::uint8_t removeExtension(const std::string& name) override;
  bool match(const LibTarnManagedObject& pattern) const override;
  bool change(const LibTarnManagedObject& pattern, const LibTarnManagedObject& values) override;
  std::uint8_t setDistName(const char* distName) override;
  LibTarnManagedObjectImp* getNextSiblingElement() const override;
  IElement* getFirstChildElement(const char* name) const override;
  void removeThisElement() override;

  /// Returns the validator that setDistName() asks.
  const IDistinguishedNameValidator* getDistNameValidator() const { return distNameValidator_; }

  /// Reads the operation and adds `p` and `list` children to the indexes. Throws
  /// DuplicateElementException for the second of one name and InvalidAttributeValueException for an
  /// unknown operation.
  void rebuildIndexersAndInitializeEnum();
  /// Like rebuildIndexersAndInitializeEnum(), and also fills the indexes of the items in the lists.
  void rebuildIndexersAndInitializeEnumAndDispatchToChildren();

  bool hasOperation() const override;
  /// Returns the attribute "operation", or null.
  rapidxml::xml_attribute<char>* findOperationAttribute() const;
  /// Returns the operation last read or written, if any. It can be set without a change of the
  /// attribute.
  const std::optional<util::Enum<Operation>>& getKeptOperation() const {
    return operation_.getKept();
  }
  /// Keeps `operation` and leaves the attribute as it is.
  void setKeptOperation(const std::optional<util::Enum<Operation>>& operation) {
    operation_.setKept(operation);
  }
  /// Links a detached parameter of this document as the last child and unlinks the one that had its
  /// name.
  void putParameter(Scalar& parameter, UndoLog& log);
  /// Links a detached list of this document as the last child and unlinks the one that had its
  /// name.
  void putParameter(List& parameter, UndoLog& log);

 protected:
  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override;
  void finishCopy() override;

 private:
  friend struct Internals;

  enum class RebuildIndexersMode { OwnIndexes, DispatchToChildren };

  void rebuildIndexersAndInitializeEnum(RebuildIndexersMode mode);
  [[noreturn]] void throwDuplicate(const char* childTag, const char* name) const;

  bool matchesAttributes(const LibTarnManagedObject& pattern) const;
  bool matchesDistName(const char* pattern) const;
  bool matchesScalars(const LibTarnManagedObject& pattern) const;
  bool matchesLists(const LibTarnManagedObject& pattern) const;
  bool hasMatch(const List& pattern) const;

  void stageAttributes(const LibTarnManagedObject& pattern, const LibTarnManagedObject& values,
                       StagedAttributes& attributes);
  void replaceScalars(const LibTarnManagedObject& values, UndoLog& log);
  void replaceLists(const LibTarnManagedObject& values, UndoLog& log);

  const IDistinguishedNameValidator* distNameValidator_;
  const indexation::ITarnIndexFactory* indexFactory_;
  indexation::ITarnUniqueIndex<Scalar>* scalarIndex_;
  indexation::ITarnUniqueIndex<List>* listIndex_;
  EnumeratedAttribute<Operation> operation_;
  UniqueContainer<LibTarnManagedObjectImp, LibTarnExtensionImp, std::string> extensions_;
};

}  // namespace model
}  // namespace libtarn
