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

/// Edits that are made all together or not at all. Each edit is made at once and noted; the
/// destructor undoes all of them, last one first, unless keep() has been called.
///
/// With the library's indexes undoing needs no memory and does not throw; what a host's index
/// throws then is dropped. An edit that throws has changed nothing. The elements must live as long
/// as the log.
class UndoLog {
 public:
  UndoLog() = default;
  UndoLog(const UndoLog&) = delete;
  UndoLog& operator=(const UndoLog&) = delete;
  ~UndoLog();

  /// Keeps the edits: the destructor undoes nothing.
  void keep() { edits_.clear(); }

  /// Sets the text of a parameter.
  void setValue(Scalar& scalar, const char* value);
  /// Sets the operation of an object.
  void setOperation(LibTarnManagedObjectImp& object, LibTarnManagedObject::Operation operation);
  /// Links `child`, of the same pool, as the last child of `parent`.
  void append(libDomXml::DomElement& parent, libDomXml::DomElement& child);
  /// Unlinks `child`; does nothing when it is not a child of `parent`.
  void unlink(libDomXml::DomElement& parent, libDomXml::DomElement& child);
  /// Puts `element` into the index and removes the element that had its name. Returns that one, or
  /// null.
  template <class Element>
  Element* putIntoIndex(indexation::ITarnUniqueIndex<Element>& index, Element& element);
  /// Adds an object, unless its name is taken.
  void addObject(LibTarnCmDataImp& cmData, LibTarnManagedObjectImp& object);
  /// Removes an object that is in the index. When it is put back, it is the last one of its class.
  void removeObject(LibTarnCmDataImp& cmData, LibTarnManagedObjectImp& object);

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
    Node* next;  // the next sibling, or null
    void undo() const;
  };
  template <class Element>
  struct PutIntoIndex {
    indexation::ITarnUniqueIndex<Element>* index;
    Element* added;    // null until it has been added
    Element* removed;  // null until it has been removed, or when there was none
    void undo() const;
  };
  struct ObjectAdded {
    LibTarnCmDataImp* cmData;
    LibTarnManagedObjectImp* object;
    void undo() const;
  };
  struct ObjectRemoved {
    LibTarnCmDataImp* cmData;
    LibTarnManagedObjectImp* object;
    Node* next;  // the next sibling, or null
    bool wasChild;
    void undo() const;
  };
  using Edit = std::variant<TextSet, OperationSet, ChildAppended, ChildUnlinked,
                            PutIntoIndex<Scalar>, PutIntoIndex<List>, ObjectAdded, ObjectRemoved>;

  std::vector<Edit> edits_;
};

}  // namespace model
}  // namespace libtarn
