#pragma once

#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/Diagnostic.hpp"
#include "libtarn/model/DistinguishedName.hpp"
#include "libtarn/model/IElement.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"
#include "libtarn/util/detail/EnumClass.hpp"
// Must be the last one: it undefines macros.
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

/// A managed object: a class, a distinguished name, possibly a version and an operation, and
/// parameters (`p`), lists and extensions.
///
/// Parameters and lists are found by name through indexes, which every edit here keeps consistent
/// with the tree; extensions are found by walking the children. Edits return 0 for done, 1 for
/// refused, 2 for no such element. Lifetime and threads as for every IElement.
class TARN_API LibTarnManagedObject : public IElement {
 public:
  /// What a delta document wants done with an object.
  class Operation : public util::Enum<Operation> {
   public:
    /// Add the object.
    static const Operation CREATE;
    /// Remove the object of that name.
    static const Operation DELETE;
    /// Update the object of that name.
    static const Operation UPDATE;
    /// Create or update, whichever fits.
    static const Operation AUTO;

    /// A copy of a constant.
    Operation(const util::Enum<Operation>& value) : Enum(value) {}  // NOLINT: converts

   private:
    explicit Operation(const char* text) : Enum(text) {}
  };

  /// The tag.
  static constexpr const char* TAG_NAME = "managedObject";

  LibTarnManagedObject* getNextSiblingElement() const override = 0;

  /// Returns a deep, detached copy in the document of `factory`, with its indexes filled. Throws
  /// DuplicateElementException when the object holds two parameters or two lists of one name, and
  /// InvalidAttributeValueException for an unknown operation.
  virtual TarnDomElement* clone(util::TarnFactory& factory) const = 0;

  /// Returns the name; its text is null when "distName" is absent.
  virtual DistinguishedName getDistName() const = 0;
  /// Returns the operation; AUTO when there is none.
  virtual Operation getOperation() const = 0;
  /// Sets the attribute "operation".
  virtual void setOperation(Operation operation) = 0;
  /// Returns true if this object matches `pattern`: same operation where the pattern has one; class
  /// and version equal or "#"; the pattern's name a part of this name, or empty, or "_-_"; and
  /// every `p` and `list` of the pattern matched.
  virtual bool match(const LibTarnManagedObject& pattern) const = 0;
  /// Returns the attribute "class", null when absent.
  virtual const char* getClass() const = 0;
  /// Returns the attribute "version", null when absent.
  virtual const char* getVersion() const = 0;
  /// Changes this object if it matches `pattern`. Sets it to the operation, class and version of
  /// `values`, replaces the pattern's name within this name by the name of `values`, and replaces
  /// the parameters and lists that `values` has. A name that the document's validator rejects is
  /// not set.
  ///
  /// Returns false, with nothing changed, when the object does not match. `values` may be this
  /// object, which changes nothing. Throws ModelException for a list that breaks a rule of the
  /// model, and std::bad_alloc, with nothing changed. tryChange() returns all of this as a value.
  virtual bool change(const LibTarnManagedObject& pattern, const LibTarnManagedObject& values) = 0;
  /// Sets the attribute "version".
  virtual void setVersion(const std::string& version) = 0;

  /// Returns true if there is a `p` of that name.
  virtual bool hasScalarParameter(const std::string& name) const = 0;
  /// Returns all `p` in byte order of their names; see TarnCollection for edits during an
  /// iteration.
  virtual indexation::ScalarCollection getScalarParameters() const = 0;
  /// Returns the `p` of that name, or null.
  virtual Scalar* getScalarParameter(const char* name) const = 0;
  /// Unlinks the `p` of that name. Returns 0, or 2 when there is none.
  virtual std::uint8_t removeScalarParameter(const std::string& name) = 0;
  /// Appends a detached `p` of this document. Returns 0, or 1 with nothing changed when one of that
  /// name exists.
  virtual std::uint8_t addParameter(Scalar& parameter) = 0;
  /// Appends a detached extension of this document. Returns 0, or 1 with nothing changed when one
  /// of that name exists.
  virtual std::uint8_t addParameter(LibTarnExtension& extension) = 0;
  /// Unlinks the list of that name. Returns 0, or 2 when there is none.
  virtual std::uint8_t removeListParameter(const std::string& name) = 0;
  /// Returns the list of that name, or null.
  virtual List* getListParameter(const std::string& name) const = 0;
  /// Returns all lists in byte order of their names; see TarnCollection for edits during an
  /// iteration.
  virtual indexation::ListCollection getListParameters() const = 0;
  /// Appends a detached list of this document. Returns 0, or 1 with nothing changed when one of
  /// that name exists.
  virtual std::uint8_t addParameter(List& parameter) = 0;
  /// Returns true if there is a list of that name.
  virtual bool hasListParameter(const std::string& name) const = 0;
  /// Returns the first extension, or null. getNextSiblingElement() returns the others.
  virtual LibTarnExtension* getExtensions() const = 0;
  /// Removes the attribute "operation".
  virtual void clearOperation() = 0;
  /// Unlinks the first extension of that name. Returns 0, or 2 when there is none.
  virtual std::uint8_t removeExtension(const std::string& name) = 0;
  /// Returns true if there is an extension of that name.
  virtual bool hasExtension(const std::string& name) const = 0;
  /// Returns the first extension of that name, or null.
  virtual LibTarnExtension* getExtension(const std::string& name) const = 0;
  /// Renames the object, also in its document's index. Returns 0, or 1 with nothing changed for a
  /// name that the document's validator rejects.
  ///
  /// Returns 0 also when another object already has the name, so a host calls
  /// hasLibTarnManagedObject() first. This object is then found by no name, which an ERROR line
  /// reports, and LibTarnDocument::validate() returns 2. That ends when the object gets a unique
  /// name, or the other object is removed or renamed.
  virtual std::uint8_t setDistName(const char* distName) = 0;
  /// Returns true if the object carries an operation. getOperation() returns AUTO both for "auto"
  /// and for none. The default, for objects of a host class, takes AUTO for none.
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
