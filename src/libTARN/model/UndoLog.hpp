#pragma once

#include <cstddef>
#include <optional>
#include <variant>
#include <vector>

#include "libtarn/DomElement.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/model/indexation/ITarnUniqueIndex.hpp"

namespace libtarn {
namespace model {

class LibTarnCmDataImp;
class LibTarnManagedObjectImp;
class Scalar;

/// Edits that are made all together or not at all: each one is made at once and remembered, and all
/// of them are taken back, last one first, unless keep() is called before the log ends.
///
/// Taking back needs no memory and does not throw, for the indexes of the library; what an index of
/// the host's throws then is dropped. An edit that throws has changed nothing itself. The elements
/// must live as long as the log.
class UndoLog {
 public:
  UndoLog() = default;
  UndoLog(const UndoLog&) = delete;
  UndoLog& operator=(const UndoLog&) = delete;
  ~UndoLog();

  /// Nothing is taken back any more.
  void keep() { edits_.clear(); }

  /// Sets the text of a parameter.
  void setValue(Scalar& scalar, const char* value);
  /// Writes the operation of an object.
  void setOperation(LibTarnManagedObjectImp& object, LibTarnManagedObject::Operation operation);
  /// Links `child`, of the same pool, as the last child of `parent`.
  void append(libDomXml::DomElement& parent, libDomXml::DomElement& child);
  /// Unlinks `child`, when it is one of `parent`.
  void unlink(libDomXml::DomElement& parent, libDomXml::DomElement& child);
  /// Puts `element` into the index in place of the one of its name. Returns that one, or null.
  template <class Element>
  Element* putIntoIndex(indexation::ITarnUniqueIndex<Element>& index, Element& element);
  /// Adds an object, unless its name is taken.
  void addObject(LibTarnCmDataImp& cmData, LibTarnManagedObjectImp& object);

 private:
  using Node = rapidxml::xml_node<char>;

  struct TextSet {
    rapidxml::xml_base<char>* record;
    char* text;
    std::size_t size;
    void undo() const;
  };
  struct OperationSet {
    LibTarnManagedObjectImp* object;
    rapidxml::xml_attribute<char>* attribute;  // null: there was none
    char* text;
    std::size_t size;
    std::optional<util::Enum<LibTarnManagedObject::Operation>> kept;
    void undo() const;
  };
  struct ChildAppended {
    Node* parent;
    Node* child;
    void undo() const;
  };
  struct ChildUnlinked {
    Node* parent;
    Node* child;
    Node* next;  // before which it stood, or null
    void undo() const;
  };
  template <class Element>
  struct PutIntoIndex {
    indexation::ITarnUniqueIndex<Element>* index;
    Element* added;    // null as long as it is not
    Element* removed;  // null when there was none, and as long as it is not
    void undo() const;
  };
  struct ObjectAdded {
    LibTarnCmDataImp* cmData;
    LibTarnManagedObjectImp* object;
    void undo() const;
  };
  using Edit = std::variant<TextSet, OperationSet, ChildAppended, ChildUnlinked,
                            PutIntoIndex<Scalar>, PutIntoIndex<List>, ObjectAdded>;

  std::vector<Edit> edits_;
};

}  // namespace model
}  // namespace libtarn
