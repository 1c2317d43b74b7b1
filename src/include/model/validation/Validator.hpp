#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "libtarn/TarnApi.hpp"

namespace libDomXml {
class IDomElement;
}

namespace libtarn {
namespace model {

class IElement;
class LibTarnCmDataImp;
class LibTarnDocumentInternal;
class LibTarnExtensionImp;
class LibTarnHeaderImp;
class LibTarnManagedObjectImp;
class ListImp;
class LogImp;
class ScalarImp;
class StructureImp;

namespace validation {

struct Violation;

/// Validates a document against the rules of the format, in one walk from the root. Throws a
/// ModelException for the first violation, whose message holds the element's path. With a collector
/// it records the violations instead and continues.
///
/// The elements drive the walk: TarnDomElement::accept() puts the element on the path, lets the
/// validator visit it, then its children. Holds pointers into the document while the walk runs.
/// Allocates for messages and for a path deeper than before, not for each element. Used by one
/// thread at a time.
class TARN_API Validator {
 public:
  /// Stands for no limit.
  static constexpr std::size_t NO_LIMIT = SIZE_MAX;

  /// With a `collector`, which stays the caller's, no violation is thrown: violations are appended
  /// to it in the order of the walk. Only the first `limit` are, and only while the texts of those
  /// before hold fewer than `byteLimit` bytes; the others are counted.
  ///
  /// A message and a path hold the names from the root down: without a `byteLimit`, a document of n
  /// bytes can take n * n bytes. With one, the texts take at most `byteLimit` bytes and one
  /// violation more.
  explicit Validator(std::vector<Violation>* collector = nullptr, std::size_t limit = NO_LIMIT,
                     std::size_t byteLimit = NO_LIMIT)
      : collector_(collector), limit_(limit), byteLimit_(byteLimit) {
    pathStack_.reserve(USUAL_DEPTH);
  }
  virtual ~Validator();

  /// Returns the number of violations that a collecting validator has found, also beyond its
  /// limits.
  std::size_t getViolationCount() const { return violationCount_; }

  /// Puts an element on the path; `id` may be null. Throws std::invalid_argument for a null tag.
  void appendToPath(const char* tagName, const char* id);
  /// Removes the last element from the path. Throws std::logic_error when there is none.
  void popPath();
  /// Returns "TAG:ID > " for each element from the root down, ":ID" only for those with an id.
  std::string getPath() const;

  /// Requires the attribute and, when `expected` is not null, that it equals `expected`.
  void validateAttribute(const libDomXml::IDomElement& element, const char* name,
                         const char* expected) const;
  /// Requires that the element has a text.
  void validateValue(const libDomXml::IDomElement& element) const;
  /// Requires the attribute "distName", with a valid name.
  void validateDistinguishedName(const LibTarnManagedObjectImp& object);
  /// Requires that a list does not hold both plain values and structures.
  void validateChildrenType(const ListImp& list);
  /// Requires `minCount` to `maxCount` children of that class. Counts to `maxCount` + 1 at most.
  /// Instantiated for LibTarnCmDataImp and LibTarnHeaderImp.
  template <class Child>
  void validateChildCount(const IElement& element, std::size_t minCount,
                          std::size_t maxCount) const;
  /// Requires at least one child of that class. Instantiated for LibTarnManagedObjectImp.
  template <class Child>
  void validateAtLeastOneChild(const IElement& element) const;

  /// Asks the rules of the root: its attributes and the number of bodies.
  void visit(const LibTarnDocumentInternal& root);
  /// Asks the rules of a body: the number of headers and, for a plan, of objects.
  void visit(const LibTarnCmDataImp& cmData);
  /// A header has no rules of its own.
  void visit(const LibTarnHeaderImp& header);
  /// Asks the rules of a log entry: its attributes.
  void visit(const LogImp& log);
  /// Asks the rules of an object: its class and its distinguished name.
  void visit(const LibTarnManagedObjectImp& object);
  /// An extension has no rules of its own; its parameters must have names.
  void visit(const LibTarnExtensionImp& extension);
  /// Asks the rules of a `p`: its name, unless it is a plain value.
  void visit(const ScalarImp& scalar);
  /// Asks the rules of a list: its name, and that it does not hold both plain values and items.
  void visit(const ListImp& list);
  /// An item has no rules of its own; its components must have names.
  void visit(const StructureImp& structure);

 private:
  static constexpr std::size_t USUAL_DEPTH = 16;

  struct PathEntry {
    const char* tagName;
    const char* id;
  };

  template <class Rule>
  void require(const libDomXml::IDomElement& element, const char* name, Rule isKept) const;
  template <class Child, class Rule>
  void requireChildCount(const IElement& element, std::size_t minCount, std::size_t maxCount,
                         Rule isKept) const;
  template <class Child>
  void reportNoChild() const;
  template <class MakeException>
  void report(MakeException makeException) const;

  bool nameRequired_ = false;  // whether the `p` visited next must have a name
  std::vector<PathEntry> pathStack_;
  std::vector<Violation>* collector_;  // null: violations are thrown
  std::size_t limit_;
  std::size_t byteLimit_;
  mutable std::size_t violationCount_ = 0;
  mutable std::size_t byteCount_ = 0;  // of the collected texts
};

}  // namespace validation
}  // namespace model
}  // namespace libtarn
