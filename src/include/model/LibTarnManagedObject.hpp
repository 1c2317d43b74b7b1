#pragma once

#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/Diagnostic.hpp"
#include "libtarn/model/DistinguishedName.hpp"
#include "libtarn/model/IElement.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"
#include "libtarn/util/detail/EnumClass.hpp"
// The last one: it has effect on what follows.
#include "libtarn/util/detail/hostMacrosOff.hpp"

namespace libtarn {
namespace util {
class TarnFactory;
}

namespace model {

class LibTarnExtension;
class List;
class Scalar;
class TarnDomElement;

/// A managed object: a class, a distinguished name, perhaps a version and an operation, and
/// parameters (`p`), lists and extensions.
///
/// Parameters and lists are found by name through indexes, which every edit here keeps in step with
/// the tree; extensions are found by walking. Edit results: 0 done, 1 refused, 2 no such element.
/// Lifetime and threads as for every IElement.
class TARN_API LibTarnManagedObject : public IElement {
 public:
  /// What a delta document asks for an object.
  class Operation : public util::Enum<Operation> {
   public:
    /// What becomes of the object of that name; AUTO is create or update, whichever fits.
    static const Operation CREATE;
    static const Operation DELETE;
    static const Operation UPDATE;
    static const Operation AUTO;

    /// A copy of a constant.
    Operation(const util::Enum<Operation>& value) : Enum(value) {}  // NOLINT: converts

   private:
    explicit Operation(const char* text) : Enum(text) {}
  };

  /// The tag.
  static constexpr const char* TAG_NAME = "managedObject";

  LibTarnManagedObject* getNextSiblingElement() const override = 0;

  /// A deep, detached copy in the document of `factory`, indexes built. Throws
  /// DuplicateElementException when the object holds two parameters or lists of one name, and
  /// InvalidAttributeValueException for an unknown operation.
  virtual TarnDomElement* clone(util::TarnFactory& factory) const = 0;

  /// The name; its text is null when "distName" is absent.
  virtual DistinguishedName getDistName() const = 0;
  /// The operation, AUTO when there is none.
  virtual Operation getOperation() const = 0;
  /// Writes the attribute "operation".
  virtual void setOperation(Operation operation) = 0;
  /// True when this object fits `pattern`: same operation where the pattern has one, class and
  /// version equal or "#", the pattern's name a part of this name (or empty, or "_-_"), and every
  /// `p` and `list` of the pattern matched.
  virtual bool match(const LibTarnManagedObject& pattern) const = 0;
  /// Null when absent.
  virtual const char* getClass() const = 0;
  virtual const char* getVersion() const = 0;
  /// If this object matches `pattern`: takes over operation, class and version of `values`, puts
  /// the name of `values` in place of the pattern's name in this name, and replaces the parameters
  /// and lists that `values` has. False, with nothing changed, when it does not match. `values` may
  /// be this object, which changes nothing. A name that the document's validator rejects is not
  /// taken over. When an exception is thrown (ModelException for a list that breaks a rule of the
  /// model, std::bad_alloc), nothing has changed. tryChange() reports all of this as a value.
  virtual bool change(const LibTarnManagedObject& pattern, const LibTarnManagedObject& values) = 0;
  /// Writes the attribute "version".
  virtual void setVersion(const std::string& version) = 0;

  /// Whether there is a `p` of that name.
  virtual bool hasScalarParameter(const std::string& name) const = 0;
  /// All `p` in byte order of their names; see TarnCollection for edits during a walk.
  virtual indexation::ScalarCollection getScalarParameters() const = 0;
  /// Null when there is none of that name.
  virtual Scalar* getScalarParameter(const char* name) const = 0;
  /// Unlinks the `p` of that name.
  virtual std::uint8_t removeScalarParameter(const std::string& name) = 0;
  /// Appends a detached element of this document; 1 when one of that name exists.
  virtual std::uint8_t addParameter(Scalar& parameter) = 0;
  virtual std::uint8_t addParameter(LibTarnExtension& extension) = 0;
  /// Unlinks the list of that name.
  virtual std::uint8_t removeListParameter(const std::string& name) = 0;
  /// Null when there is none of that name.
  virtual List* getListParameter(const std::string& name) const = 0;
  /// All lists in byte order of their names; see TarnCollection for edits during a walk.
  virtual indexation::ListCollection getListParameters() const = 0;
  /// Appends a detached list of this document; 1 when one of that name exists.
  virtual std::uint8_t addParameter(List& parameter) = 0;
  /// Whether there is a list of that name.
  virtual bool hasListParameter(const std::string& name) const = 0;
  /// First extension, or null. The others follow by getNextSiblingElement().
  virtual LibTarnExtension* getExtensions() const = 0;
  /// Removes the attribute "operation".
  virtual void clearOperation() = 0;
  /// Unlinks the first extension of that name.
  virtual std::uint8_t removeExtension(const std::string& name) = 0;
  /// Whether there is an extension of that name.
  virtual bool hasExtension(const std::string& name) const = 0;
  /// The first extension of that name, or null.
  virtual LibTarnExtension* getExtension(const std::string& name) const = 0;
  /// Renames the object, in its document's index as well. Returns 1, with nothing changed, for a
  /// name that the document's validator rejects. Returns 0 also when another object has the name
  /// already, so a host asks hasLibTarnManagedObject() first: this object is then found by no name
  /// (an ERROR line says so) and LibTarnDocument::validate() returns 2, until it gets a name of its
  /// own or the other object is removed or renamed.
  virtual std::uint8_t setDistName(const char* distName) = 0;
  /// Whether the object carries an operation. getOperation() is AUTO with "auto" and with none. The
  /// default, for objects of a host's own class, takes AUTO for none.
  virtual bool hasOperation() const;

  /// Calls change() and returns what came of it: Diagnostic::code is a ChangeResult, and the
  /// message says why the object was not changed as asked. A ModelException becomes BrokenRule.
  /// Throws what else change() throws, and std::bad_alloc; nothing has changed then. The message of
  /// InvalidName and NameTaken is empty when there is no memory for it.
  Diagnostic tryChange(const LibTarnManagedObject& pattern, const LibTarnManagedObject& values);
};

}  // namespace model

namespace util {
extern template class Enum<model::LibTarnManagedObject::Operation>;
}

}  // namespace libtarn

#include "libtarn/util/detail/hostMacrosOn.hpp"
