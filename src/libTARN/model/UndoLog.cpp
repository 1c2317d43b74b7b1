#include "UndoLog.hpp"

#include "../text/patternText.hpp"
#include "TypedChildren.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/ScalarImp.hpp"

namespace libtarn {
namespace model {

UndoLog::~UndoLog() {
  for (; !edits_.empty(); edits_.pop_back()) {
    try {
      std::visit([](const auto& edit) { edit.undo(); }, edits_.back());
    } catch (...) {  // NOLINT(bugprone-empty-catch): the exception that led here goes on
    }
  }
}

// Every edit is noted before it is made, so that there is memory to note it. To undo an edit that
// has not been made changes nothing.

void UndoLog::setValue(Scalar& scalar, const char* value) {
  rapidxml::xml_base<char>& record = implementation<ScalarImp>(scalar);
  edits_.emplace_back(TextSet{&record, record.value(), record.value_size()});
  scalar.setValue(value);
}

void UndoLog::TextSet::undo() const { record->value(text, size); }

void UndoLog::setOperation(LibTarnManagedObjectImp& object,
                           LibTarnManagedObject::Operation operation) {
  auto* const attribute = object.findOperationAttribute();
  edits_.emplace_back(OperationSet{&object, attribute, attribute ? attribute->value() : nullptr,
                                   attribute ? attribute->value_size() : 0,
                                   object.getKeptOperation()});
  object.setOperation(operation);
}

void UndoLog::OperationSet::undo() const {
  attribute ? attribute->value(text, size) : object->clearOperation();
  object->setKeptOperation(kept);
}

void UndoLog::append(libDomXml::DomElement& parent, libDomXml::DomElement& child) {
  edits_.emplace_back(ChildAppended{&parent, &child});
  parent.append_node(&child);
}

void UndoLog::ChildAppended::undo() const {
  if (child->parent() == parent) parent->remove_node(child);
}

void UndoLog::unlink(libDomXml::DomElement& parent, libDomXml::DomElement& child) {
  if (child.parent() != &parent) return;
  edits_.emplace_back(ChildUnlinked{&parent, &child, child.next_sibling()});
  parent.remove_node(&child);
}

void UndoLog::ChildUnlinked::undo() const {
  if (!child->parent()) parent->insert_node(next, child);
}

// An index that has just removed an entry can add one of the same name without memory.
template <class Element>
Element* UndoLog::putIntoIndex(indexation::ITarnUniqueIndex<Element>& index, Element& element) {
  edits_.emplace_back(PutIntoIndex<Element>{&index, nullptr, nullptr});
  const char* const name = textOrEmpty(element.getName());
  Element* const earlier = index.find(name);
  if (earlier && index.remove(name)) {
    std::get<PutIntoIndex<Element>>(edits_.back()).removed = earlier;
  }
  if (index.add(&element)) std::get<PutIntoIndex<Element>>(edits_.back()).added = &element;
  return earlier;
}

template <class Element>
void UndoLog::PutIntoIndex<Element>::undo() const {
  if (added) index->remove(added);
  if (removed) index->add(removed);
}

template Scalar* UndoLog::putIntoIndex(indexation::ITarnUniqueIndex<Scalar>& index,
                                       Scalar& element);
template List* UndoLog::putIntoIndex(indexation::ITarnUniqueIndex<List>& index, List& element);

void UndoLog::addObject(LibTarnCmDataImp& cmData, LibTarnManagedObjectImp& object) {
  edits_.emplace_back(ObjectAdded{&cmData, &object});
  cmData.addLibTarnManagedObject(object);
}

void UndoLog::ObjectAdded::undo() const {
  if (object->parent() == cmData) cmData->removeWithoutMemory(object->getDistName());
}

void UndoLog::removeObject(LibTarnCmDataImp& cmData, LibTarnManagedObjectImp& object) {
  const bool isChild = object.parent() == &cmData;
  edits_.emplace_back(
      ObjectRemoved{&cmData, &object, isChild ? object.next_sibling() : nullptr, isChild});
  cmData.removeWithoutMemory(object.getDistName());
}

// Adding links it as the last child.
void UndoLog::ObjectRemoved::undo() const {
  if (object->parent() || cmData->hasLibTarnManagedObject(object->getDistName())) return;
  cmData->addLibTarnManagedObject(*object);
  cmData->remove_node(object);
  if (wasChild) cmData->insert_node(next, object);
}

}  // namespace model
}  // namespace libtarn
