// Everything that the source gets is a copy in its pool, made by its factory. A copy may break a
// rule of the model, and memory may run out, so every change is noted in an UndoLog, which undoes
// all of them after an exception. Deleted objects are removed at the end, when nothing can fail any
// more. Of several deltas, a later one does not see what an earlier one deletes; only when it
// creates an object of that name, the old one is removed at once.

#include "Changes.hpp"

#include <map>

#include "../text/patternText.hpp"
#include "../util/joined.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/editor/exceptions/EditorException.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/ScalarImp.hpp"

namespace libtarn {
namespace editor {

using model::DistinguishedName;
using model::LibTarnCmDataImp;
using model::LibTarnExtension;
using model::LibTarnHeader;
using model::LibTarnManagedObject;
using model::LibTarnManagedObjectImp;
using model::UndoLog;
using Operation = LibTarnManagedObject::Operation;

namespace {

// The message is `before`, "'managedObject' element with 'distName=NAME'" and `after`.
std::string conflictText(const char* before, const DistinguishedName& distName, const char* after) {
  return util::joined(before, "'", LibTarnManagedObject::TAG_NAME, "' element with '",
                      DistinguishedName::ATTR_NAME, "=", distName.getText(), "'", after);
}

template <class Imp, class Interface>
Imp& copyInto(util::TarnFactory& factory, const Interface& element) {
  return *model::implementation<Imp>(element).clone(factory);
}

}  // namespace

std::optional<std::string> conflictOf(const Operation& operation, bool isThere,
                                      const DistinguishedName& distName) {
  if (operation == Operation::UPDATE && !isThere) {
    return conflictText("There is no ", distName, " to update");
  }
  if (operation == Operation::CREATE && isThere) {
    return conflictText("A ", distName, " already exists");
  }
  if (operation == Operation::DELETE && !isThere) {
    return conflictText("There is no ", distName, " to delete");
  }
  return {};
}

Operation explicitOperation(bool isThere) {
  return isThere ? Operation::UPDATE : Operation::CREATE;
}

void updateScalars(util::TarnFactory& factory, LibTarnManagedObjectImp& source,
                   const LibTarnManagedObject& delta, UndoLog& log) {
  for (const auto& [name, parameter] : delta.getScalarParameters()) {
    if (model::Scalar* const current = source.getScalarParameter(name)) {
      log.setValue(*current, parameter->getValue());
    } else {
      source.putParameter(copyInto<model::ScalarImp>(factory, *parameter), log);
    }
  }
}

void updateLists(util::TarnFactory& factory, LibTarnManagedObjectImp& source,
                 const LibTarnManagedObject& delta, UndoLog& log) {
  for (const auto& entry : delta.getListParameters()) {
    source.putParameter(copyInto<model::ListImp>(factory, *entry.second), log);
  }
}

// Removing and adding one by one would walk the source's extensions again for each of the delta's,
// and would replace an extension of a name only to replace it again by a later one.
void updateExtensions(util::TarnFactory& factory, LibTarnManagedObjectImp& source,
                      const LibTarnManagedObject& delta, UndoLog& log) {
  std::map<std::string_view, const LibTarnExtension*> lastOfName;
  for (auto* extension = delta.getExtensions(); extension;
       extension = extension->getNextSiblingElement()) {
    lastOfName[model::textOrEmpty(extension->getName())] = extension;
  }
  if (lastOfName.empty()) return;

  LibTarnExtension* next = nullptr;
  for (auto* extension = source.getExtensions(); extension; extension = next) {
    next = extension->getNextSiblingElement();
    if (lastOfName.count(model::textOrEmpty(extension->getName())) > 0) {
      log.unlink(source, model::implementation<model::LibTarnExtensionImp>(*extension));
    }
  }
  for (auto* extension = delta.getExtensions(); extension;
       extension = extension->getNextSiblingElement()) {
    if (lastOfName[model::textOrEmpty(extension->getName())] != extension) continue;
    log.append(source, copyInto<model::LibTarnExtensionImp>(factory, *extension));
  }
}

void update(util::TarnFactory& factory, LibTarnManagedObject& source,
            const LibTarnManagedObject& delta, UndoLog& log) {
  auto& target = model::implementation<LibTarnManagedObjectImp>(source);
  updateScalars(factory, target, delta, log);
  updateLists(factory, target, delta, log);
  updateExtensions(factory, target, delta, log);
}

void Changes::applyAll(LibTarnCmDataImp& delta) {
  for (const DistinguishedName& distName : deleted_) {
    deletedBefore_.insert(model::textOrEmpty(distName.getText()));
  }
  deleted_.clear();
  for (const LibTarnManagedObject* object : delta.getLibTarnManagedObjects()) {
    const DistinguishedName distName = object->getDistName();
    const auto conflict = conflictOf(object->getOperation(), find(distName) != nullptr, distName);
    if (conflict) throw exceptions::EditorException(*conflict);
  }
  for (LibTarnManagedObject* object : delta.getLibTarnManagedObjects()) {
    const DistinguishedName distName = object->getDistName();
    applyResolvingAuto(find(distName), *object, distName);
  }
  addLogs(delta);
}

LibTarnManagedObject* Changes::find(const DistinguishedName& distName) const {
  const bool isDeleted =
      !deletedBefore_.empty() && deletedBefore_.count(model::textOrEmpty(distName.getText())) > 0;
  return isDeleted ? nullptr : source_.getLibTarnManagedObject(distName);
}

void Changes::apply(LibTarnManagedObject* source, LibTarnManagedObject& delta,
                    const DistinguishedName& distName, Operation operation) {
  if (operation == Operation::CREATE) {
    auto& copy = copyInto<LibTarnManagedObjectImp>(factory_, delta);
    removeDeleted(distName);
    log_.addObject(source_, copy);
  } else if (operation == Operation::DELETE) {
    deleted_.push_back(distName);
  } else {
    TARN_ASSERT(source, "source && delta");
    if (source != &delta) update(factory_, *source, delta, log_);
  }
}

void Changes::removeDeleted(const DistinguishedName& distName) {
  if (deletedBefore_.empty()) return;
  const auto deleted = deletedBefore_.find(model::textOrEmpty(distName.getText()));
  if (deleted == deletedBefore_.end()) return;
  LibTarnManagedObject& object = *source_.getLibTarnManagedObject(distName);
  log_.removeObject(source_, model::implementation<LibTarnManagedObjectImp>(object));
  deletedBefore_.erase(deleted);
}

void Changes::applyResolvingAuto(LibTarnManagedObject* source, LibTarnManagedObject& delta,
                                 const DistinguishedName& distName) {
  Operation operation = delta.getOperation();
  if (operation == Operation::AUTO) {
    operation = explicitOperation(source != nullptr);
    log_.setOperation(model::implementation<LibTarnManagedObjectImp>(delta), operation);
  }
  apply(source, delta, distName, operation);
}

void Changes::addLogs(const LibTarnCmDataImp& delta) {
  LibTarnHeader* const target = source_.getLibTarnHeader();
  const LibTarnHeader* const header = delta.getLibTarnHeader();
  if (!target || !header || header == target) return;
  auto& element = model::implementation<model::LibTarnHeaderImp>(*target);
  if (element.appendCopiesOfLogs(*header, log_)) header_ = &element;
}

void Changes::finish() {
  for (const std::string_view distName : deletedBefore_) {
    source_.removeWithoutMemory(distName.data());
  }
  for (const DistinguishedName& distName : deleted_) source_.removeWithoutMemory(distName);
  if (header_) header_->truncate();
  log_.keep();
}

}  // namespace editor
}  // namespace libtarn
