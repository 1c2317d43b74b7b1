// A merge makes two passes over the objects of the delta, in name order. The first pass only looks
// for conflicts: a delta with a conflict leaves the source as it is. The second pass changes the
// source. Each pass costs one look-up by name for each object, and what the object's own content
// costs. Nothing walks the source, except the extensions of an object that is updated: they have no
// index.
//
// Everything that the source gets is a copy in its pool, made by its factory. A copy may break a
// rule of the model, and memory may run out, so every change is noted in an UndoLog, which undoes
// all of them after an exception. Deleted objects are removed at the end, when nothing can fail any
// more.

#include "libtarn/editor/TarnMerge.hpp"

#include <map>
#include <new>
#include <string_view>
#include <vector>

#include "../model/TypedChildren.hpp"
#include "../model/UndoLog.hpp"
#include "../text/patternText.hpp"
#include "../util/LogLocation.hpp"
#include "../util/joined.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/editor/exceptions/EditorException.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/util/Logger.hpp"

namespace libtarn {
namespace editor {

using exceptions::EditorException;
using model::DistinguishedName;
using model::LibTarnCmData;
using model::LibTarnCmDataImp;
using model::LibTarnDocument;
using model::LibTarnExtension;
using model::LibTarnHeader;
using model::LibTarnManagedObject;
using model::LibTarnManagedObjectImp;
using model::UndoLog;
using Operation = LibTarnManagedObject::Operation;

namespace {

// Hosts filter their logs by these locations, so they stay when lines of this file move.
constexpr const char* NO_SOURCE_LOCATION = "src/libTARN/editor/TarnMerge.cpp:41";
constexpr const char* NO_DELTA_LOCATION = "src/libTARN/editor/TarnMerge.cpp:49";
constexpr const char* CONFLICT_LOCATION = "src/libTARN/editor/TarnMerge.cpp:64";
constexpr const char* NO_SOURCE_FOR_OBJECT_LOCATION = "src/libTARN/editor/TarnMerge.cpp:266";

constexpr const char* SAME_DOCUMENT_MESSAGE = "Source and delta are the same document";
constexpr const char* SAME_OBJECT_MESSAGE = "Source and delta are the same object";
constexpr const char* NO_DELTA_MESSAGE = "Delta document doesn't have cmData node";
constexpr const char* NO_SOURCE_MESSAGE = "Source document doesn't have cmData node";

void logError(const char* location, const char* function, const char* message) {
  util::Logger(util::Logger::Level::ERROR, location, function) << message;
}

// The message is `before`, "'managedObject' element with 'distName=NAME'" and `after`.
[[noreturn]] void throwConflict(const char* before, const DistinguishedName& distName,
                                const char* after) {
  throw EditorException(util::joined(before, "'", LibTarnManagedObject::TAG_NAME,
                                     "' element with '", DistinguishedName::ATTR_NAME, "=",
                                     distName.getText(), "'", after));
}

template <class Imp, class Interface>
Imp& copyInto(util::TarnFactory& factory, const Interface& element) {
  return *model::implementation<Imp>(element).clone(factory);
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

// Refuses an update of an object with itself: it would unlink the very elements that it is to copy.
template <class Update>
void updatePart(util::TarnFactory& factory, LibTarnManagedObject* source,
                const LibTarnManagedObject* delta, const char* function, Update update) {
  TARN_ASSERT(source && delta, "source && delta");
  if (source == delta) return logError(TARN_LOG_LOCATION, function, SAME_OBJECT_MESSAGE);
  UndoLog log;
  update(factory, model::implementation<LibTarnManagedObjectImp>(*source), *delta, log);
  log.keep();
}

/// The changes that one merge makes in a source. They stay only if finish() is reached.
class Changes {
 public:
  Changes(LibTarnCmDataImp& source, util::TarnFactory& factory)
      : source_(source), factory_(factory) {}

  /// Applies `delta`; `source` is the object of the name `distName`, or null.
  void apply(LibTarnManagedObject* source, LibTarnManagedObject& delta,
             const DistinguishedName& distName, Operation operation) {
    if (operation == Operation::CREATE) {
      log_.addObject(source_, copyInto<LibTarnManagedObjectImp>(factory_, delta));
    } else if (operation == Operation::DELETE) {
      deleted_.push_back(distName);
    } else {
      TARN_ASSERT(source, "source && delta");
      if (source != &delta) update(factory_, *source, delta, log_);
    }
  }

  /// Like apply(). For "auto", first writes the explicit operation into the delta, and so into the
  /// copy.
  void applyResolvingAuto(LibTarnManagedObject* source, LibTarnManagedObject& delta,
                          const DistinguishedName& distName) {
    Operation operation = delta.getOperation();
    if (operation == Operation::AUTO) {
      operation = explicitOperation(source);
      log_.setOperation(model::implementation<LibTarnManagedObjectImp>(delta), operation);
    }
    apply(source, delta, distName, operation);
  }

  /// Appends copies of the log entries, when source and delta have a header.
  void addLogs(const LibTarnCmDataImp& delta) {
    LibTarnHeader* const target = source_.getLibTarnHeader();
    const LibTarnHeader* const header = delta.getLibTarnHeader();
    if (!target || !header || header == target) return;
    auto& element = model::implementation<model::LibTarnHeaderImp>(*target);
    if (element.appendCopiesOfLogs(*header, log_)) header_ = &element;
  }

  /// Makes the changes that cannot fail, and keeps all of them.
  void finish() {
    for (const DistinguishedName& distName : deleted_) source_.removeWithoutMemory(distName);
    if (header_) header_->truncate();
    log_.keep();
  }

  static Operation explicitOperation(const LibTarnManagedObject* source) {
    return source ? Operation::UPDATE : Operation::CREATE;
  }

 private:
  LibTarnCmDataImp& source_;
  util::TarnFactory& factory_;
  UndoLog log_;
  std::vector<DistinguishedName> deleted_;
  model::LibTarnHeaderImp* header_ = nullptr;
};

}  // namespace

TarnMerge::TarnMerge(LibTarnDocument& source)
    : domDocument_(source.getItsTarnDomDocument()),
      cmData_(getCmData(source)),
      factory_(source.getFactory()) {}

// Refuses the merge also when there is no memory for the reason.
bool TarnMerge::refuse(const char* reason) {
  diagnostic_.code = model::EditResult::Refused;
  try {
    diagnostic_.message = reason;
  } catch (const std::bad_alloc&) {
    diagnostic_.message.clear();
  }
  return false;
}

bool TarnMerge::mergeDocument(LibTarnDocument& delta) {
  diagnostic_ = {};
  if (!cmData_) {
    logError(NO_SOURCE_LOCATION, "mergeDocument", NO_SOURCE_MESSAGE);
    return refuse(NO_SOURCE_MESSAGE);
  }
  if (delta.getItsTarnDomDocument() == domDocument_) {
    logError(TARN_LOG_LOCATION, "mergeDocument", SAME_DOCUMENT_MESSAGE);
    return refuse(SAME_DOCUMENT_MESSAGE);
  }
  LibTarnCmDataImp* const deltaCmData = getCmData(delta);
  if (!deltaCmData) {
    logError(NO_DELTA_LOCATION, "mergeDocument", NO_DELTA_MESSAGE);
    return refuse(NO_DELTA_MESSAGE);
  }
  return doMerge(deltaCmData);
}

LibTarnCmDataImp* TarnMerge::getCmData(LibTarnDocument& document) {
  LibTarnCmData* const cmData = document.getLibTarnCmData();
  return cmData ? &model::implementation<LibTarnCmDataImp>(*cmData) : nullptr;
}

bool TarnMerge::doMerge(LibTarnCmDataImp* delta) {
  TARN_ASSERT(cmData_ && delta, "cmData && delta");
  diagnostic_ = {};
  if (delta == cmData_) {
    logError(TARN_LOG_LOCATION, "doMerge", SAME_DOCUMENT_MESSAGE);
    return refuse(SAME_DOCUMENT_MESSAGE);
  }
  try {
    goThroughAllDeltaMoWithExecutor(delta, &TarnMerge::checkForMergeConflicts);
  } catch (const EditorException& conflict) {
    logError(CONFLICT_LOCATION, "doMerge", conflict.what());
    return refuse(conflict.what());
  }
  Changes changes(*cmData_, factory_);
  for (LibTarnManagedObject* object : delta->getLibTarnManagedObjects()) {
    const DistinguishedName distName = object->getDistName();
    changes.applyResolvingAuto(cmData_->getLibTarnManagedObject(distName), *object, distName);
  }
  changes.addLogs(*delta);
  changes.finish();
  return true;
}

void TarnMerge::goThroughAllDeltaMoWithExecutor(LibTarnCmDataImp* delta, MergeExecutor executor) {
  TARN_ASSERT(cmData_ && delta, "cmData && delta");
  for (LibTarnManagedObject* object : delta->getLibTarnManagedObjects()) {
    const DistinguishedName distName = object->getDistName();
    (this->*executor)(cmData_->getLibTarnManagedObject(distName), object, distName);
  }
}

void TarnMerge::checkForMergeConflicts(LibTarnManagedObject* source, LibTarnManagedObject* delta,
                                       const DistinguishedName& distName) {
  const Operation operation = delta->getOperation();
  if (operation == Operation::UPDATE && !source) {
    throwConflict("There is no ", distName, " to update");
  }
  if (operation == Operation::CREATE && source) throwConflict("A ", distName, " already exists");
  if (operation == Operation::DELETE && !source) {
    throwConflict("There is no ", distName, " to delete");
  }
}

void TarnMerge::mergeDocuments(LibTarnManagedObject* source, LibTarnManagedObject* delta,
                               const DistinguishedName& distName) {
  TARN_ASSERT(cmData_ && delta, "cmData && delta");
  Changes changes(*cmData_, factory_);
  changes.applyResolvingAuto(source, *delta, distName);
  changes.finish();
}

bool TarnMerge::mergeManagedObject(LibTarnManagedObject& delta) {
  diagnostic_ = {};
  if (!cmData_) {
    logError(NO_SOURCE_FOR_OBJECT_LOCATION, "mergeManagedObject", NO_SOURCE_MESSAGE);
    return refuse(NO_SOURCE_MESSAGE);
  }
  const DistinguishedName distName = delta.getDistName();
  LibTarnManagedObject* const source = cmData_->getLibTarnManagedObject(distName);
  try {
    checkForMergeConflicts(source, &delta, distName);
  } catch (const EditorException& conflict) {
    return refuse(conflict.what());
  }
  Operation operation = delta.getOperation();
  if (operation == Operation::AUTO) operation = getExplicitOperationFromAutoOperation(source);
  Changes changes(*cmData_, factory_);
  changes.apply(source, delta, distName, operation);
  changes.finish();
  return true;
}

Operation TarnMerge::getExplicitOperationFromAutoOperation(const LibTarnManagedObject* source) {
  return Changes::explicitOperation(source);
}

void TarnMerge::doOperationCreate(const LibTarnManagedObject* delta) {
  cmData_->addLibTarnManagedObject(copyInto<LibTarnManagedObjectImp>(factory_, *delta));
}

void TarnMerge::doOperationDelete(const DistinguishedName& distName) {
  cmData_->removeLibTarnManagedObject(distName);
}

void TarnMerge::doOperationUpdate(LibTarnManagedObject* source, const LibTarnManagedObject* delta) {
  TARN_ASSERT(source && delta, "source && delta");
  if (source == delta) return;
  UndoLog log;
  update(factory_, *source, *delta, log);
  log.keep();
}

void TarnMerge::updateScalars(LibTarnManagedObject* source, const LibTarnManagedObject* delta) {
  updatePart(factory_, source, delta, "updateScalars", editor::updateScalars);
}

void TarnMerge::updateLists(LibTarnManagedObject* source, const LibTarnManagedObject* delta) {
  updatePart(factory_, source, delta, "updateLists", editor::updateLists);
}

void TarnMerge::updateExtensions(LibTarnManagedObject* source, const LibTarnManagedObject* delta) {
  updatePart(factory_, source, delta, "updateExtensions", editor::updateExtensions);
}

void TarnMerge::addHeaders(LibTarnCmDataImp* delta) {
  TARN_ASSERT(cmData_ && delta, "cmData && delta");
  Changes changes(*cmData_, factory_);
  changes.addLogs(*delta);
  changes.finish();
}

}  // namespace editor
}  // namespace libtarn
