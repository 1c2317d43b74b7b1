#pragma once

// All faults of a document that was read as far as possible.
//
// The walk of a Validator goes by the indexes, which lack what a duplicate hides. This one goes by
// the tree, in document order. The elements of the model lie at most five deep, and the walk has
// one function for each kind, so that it does not recurse.
//
// A fault that has been found is a few pointers. Its texts, which can be as long as the document,
// are made when somebody gets them: by the same calls that throw in a load or a validation.

#include <cstddef>
#include <string_view>
#include <vector>

#include "TolerantDocument.hpp"
#include "libtarn/model/validation/Diagnosis.hpp"
#include "libtarn/util/TextPosition.hpp"

namespace libtarn {
namespace model {

class IDistinguishedNameValidator;
class LibTarnCmDataImp;
class LibTarnHeaderImp;
class LibTarnManagedObjectImp;
class ListImp;
class StructureImp;

namespace validation {

class Validator;

/// A fault of a document.
struct Fault {
  Finding::Kind kind;
  /// Null outside of every element.
  TarnDomElement* element;
  /// Byte offsets, as Finding has them.
  std::size_t offset;
  std::size_t firstOffset = util::NO_OFFSET;
  /// The parser's, of malformed XML and of an unknown element.
  const char* message = nullptr;
};

/// Throws the exception that a load or a validation throws for the fault: rapidxml::parse_error or
/// a ModelException. The validator has the path of the element.
void refuse(const Fault& fault, Validator& validator);

/// Finds the faults of one document.
class FaultFinder {
 public:
  /// Both must outlive the faults that are found.
  FaultFinder(TolerantDocument& document, const IDistinguishedNameValidator& nameValidator);

  /// All faults, by their offsets. Called once.
  std::vector<Fault> find();

 private:
  using Node = rapidxml::xml_node<char>;

  struct Named {
    std::string_view name;
    TarnDomElement* element;
  };

  void findUnknownElements();
  Node* nextInDocumentOrder(Node& node) const;

  void checkRoot(LibTarnDocumentInternal& root);
  void checkBody(LibTarnCmDataImp& cmData);
  void checkHeader(LibTarnHeaderImp& header);
  void checkObject(LibTarnManagedObjectImp& object);
  void checkList(ListImp& list);
  void checkItem(StructureImp& item);
  void checkParameterName(TarnDomElement& parameter);

  template <std::size_t Size, class Rule>
  void require(TarnDomElement& element, const char (&attribute)[Size], Rule isKept,
               Finding::Kind kind);
  void requireDistinctNames(std::vector<Named>& named, Finding::Kind kind);
  void note(TarnDomElement& element, Finding::Kind kind, const char* message = nullptr);
  bool isOpen(const Node& element) const;

  TolerantDocument& document_;
  const IDistinguishedNameValidator& nameValidator_;
  std::vector<const Node*> open_;  // sorted
  std::vector<Fault> faults_;
};

}  // namespace validation
}  // namespace model
}  // namespace libtarn
