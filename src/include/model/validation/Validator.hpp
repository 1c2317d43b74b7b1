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

/// Checks a document against the rules of the format, in one walk from the root. Stops at the first
/// violation by throwing a ModelException whose message holds the element's path; with a collector
/// it records the violations instead and goes on.
///
/// The elements drive the walk: TarnDomElement::accept() puts the element on the path, lets the
/// validator visit it, then its children. Holds pointers into the document while the walk runs.
/// Allocates for messages and for a path deeper than before, not for each element. One thread.
class TARN_API Validator {
 public:
  /// All violations.
  static constexpr std::size_t NO_LIMIT = SIZE_MAX;

  /// With a `collector`, which stays the caller's, the rules throw nothing: violations are appended
  /// to it in the order of the walk, the first `limit` of them and only while the texts of those
  /// before hold fewer than `byteLimit` bytes; the others are counted. A message and a path hold
  /// the names from the root down, so that without a `byteLimit` a document of n bytes can take n *
  /// n. With one, the texts take `byteLimit` and one violation more at most.
  explicit Validator(std::vector<Violation>* collector = nullptr, std::size_t limit = NO_LIMIT,
                     std::size_t byteLimit = NO_LIMIT)
      : collector_(collector), limit_(limit), byteLimit_(byteLimit) {
    pathStack_.reserve(USUAL_DEPTH);
  }
  virtual ~Validator();

  /// Violations that a collecting validator has found, with those beyond its limits.
  std::size_t getViolationCount() const { return violationCount_; }

  /// Puts an element on the path; `id` may be null. A null tag throws std::invalid_argument.
  void appendToPath(const char* tagName, const char* id);
  /// Takes the last element off the path. Throws std::logic_error when there is none.
  void popPath();
  /// "TAG:ID > " for each element from the root down, ":ID" only where there is one.
  std::string getPath() const;

  /// The attribute must be there and, when `expected` is not null, equal it.
  void validateAttribute(const libDomXml::IDomElement& element, const char* name,
                         const char* expected) const;
  /// The element must have a text.
  void validateValue(const libDomXml::IDomElement& element) const;
  /// "distName" must be there and a valid name.
  void validateDistinguishedName(const LibTarnManagedObjectImp& object);
  /// A list holds plain values or structures, not both.
  void validateChildrenType(const ListImp& list);
  /// From `minCount` to `maxCount` children of that class. Instantiated for LibTarnCmDataImp and
  /// LibTarnHeaderImp. Counts to `maxCount` + 1 at most.
  template <class Child>
  void validateChildCount(const IElement& element, std::size_t minCount,
                          std::size_t maxCount) const;
  /// At least one child of that class. Instantiated for LibTarnManagedObjectImp.
  template <class Child>
  void validateAtLeastOneChild(const IElement& element) const;

  /// The rules for one element of each kind, its children not included.
  void visit(const LibTarnDocumentInternal& root);
  void visit(const LibTarnCmDataImp& cmData);
  void visit(const LibTarnHeaderImp& header);
  void visit(const LogImp& log);
  void visit(const LibTarnManagedObjectImp& object);
  void visit(const LibTarnExtensionImp& extension);
  void visit(const ScalarImp& scalar);
  void visit(const ListImp& list);
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
  std::vector<Violation>* collector_;  // null: throw
  std::size_t limit_;
  std::size_t byteLimit_;
  mutable std::size_t violationCount_ = 0;
  mutable std::size_t byteCount_ = 0;  // of what was collected
};

}  // namespace validation
}  // namespace model
}  // namespace libtarn
