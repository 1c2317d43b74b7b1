#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/DistinguishedName.hpp"
#include "libtarn/model/IElement.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"
#include "libtarn/util/detail/EnumClass.hpp"
// Must be the last one: it undefines macros.
#include "libtarn/util/detail/hostMacrosOff.hpp"

namespace libtarn {
namespace model {

class LibTarnHeader;
class LibTarnManagedObject;

/// The body of a document, `cmData`: at most one header and any number of managed objects.
///
/// Objects are found by distinguished name and by class through an index, which every edit here
/// keeps consistent with the tree. Lifetime and threads as for every IElement.
class TARN_API LibTarnCmData : public IElement {
 public:
  /// What the document describes.
  class Type : public util::Enum<Type> {
   public:
    /// The network as it is.
    static const Type ACTUAL;
    /// The network as it is to be.
    static const Type PLAN;
    /// Values that apply where no other is given.
    static const Type DEFAULTS;

    /// A copy of a constant.
    Type(const util::Enum<Type>& value) : Enum(value) {}  // NOLINT: converts

   private:
    explicit Type(const char* text) : Enum(text) {}
  };

  /// The tag.
  static constexpr const char* TAG_NAME = "cmData";

  LibTarnCmData* getNextSiblingElement() const override = 0;

  /// Returns the type; DEFAULTS until it has been read from a document or set.
  virtual Type getType() const = 0;
  /// Sets the attribute "type".
  virtual void setType(const Type& type) = 0;
  /// Returns the attribute "id", null when absent.
  virtual const char* getId() const = 0;
  /// Returns the first header, or null.
  virtual LibTarnHeader* getLibTarnHeader() const = 0;
  /// Replaces the first header by `header`, which is detached or a child; it becomes the last
  /// child.
  virtual void setLibTarnHeader(LibTarnHeader& header) = 0;
  /// Returns true if there is an object of that name.
  virtual bool hasLibTarnManagedObject(const DistinguishedName& distName) const = 0;
  /// Returns the object of that name, or null.
  virtual LibTarnManagedObject* getLibTarnManagedObject(
      const DistinguishedName& distName) const = 0;
  /// Returns all objects in byte order of their names. Objects may be added, removed or renamed
  /// during an iteration; see TarnCollection.
  virtual indexation::ManagedObjectCollection getLibTarnManagedObjects() const = 0;
  /// Appends a detached object of this document. Does nothing when its name is taken.
  virtual void addLibTarnManagedObject(LibTarnManagedObject& object) = 0;
  /// Unlinks the object of that name and removes it from the index. Returns 0, or 2 when there is
  /// none, or 1 when the object was indexed but not a child.
  virtual std::uint8_t removeLibTarnManagedObject(const DistinguishedName& distName) = 0;
  /// Returns the objects of a class in the order in which they were indexed. An iteration reaches
  /// only those that were of the class when it began.
  virtual indexation::ManagedObjectCollection getLibTarnManagedObjectsByClass(
      const std::string& className) const = 0;
  /// Returns the number of objects.
  virtual std::size_t getManagedObjectNumber() const = 0;
};

}  // namespace model

namespace util {
extern template class Enum<model::LibTarnCmData::Type>;
}

}  // namespace libtarn

#include "libtarn/util/detail/hostMacrosOn.hpp"
