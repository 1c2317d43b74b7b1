// A merge makes two passes over the objects of the delta, in name order. The first pass only looks
// for conflicts: a delta with a conflict leaves the source as it is. The second pass changes the
// source. Each pass costs one look-up by name for each object, and what the object's own content
// costs. Nothing walks the source, except the extensions of an object that is updated: they have no
// index.

#include "libtarn/editor/TarnMerge.hpp"

#include <new>

#include "../model/TypedChildren.hpp"
#include "../model/UndoLog.hpp"
#include "../util/LogLocation.hpp"
#include "Changes.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/editor/exceptions/EditorException.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/util/Logger.hpp"

namespace libtarn {
namespace editor {

using exceptions::EditorException;
using model::DistinguishedName;
using model::LibTarnCmData;
using model::LibTarnCmDataImp;
using model::LibTarnDocument;
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

constexpr const char* SAME_OBJECT_MESSAGE = "Source and delta are the same object";

void logError(const char* location, const char* function, const char* message) {
  util::Logger(util::Logger::Level::ERROR, location, function) << message;
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
  Changes changes(*cmData_, factory_);
  try {
    changes.applyAll(*delta);
  } catch (const EditorException& conflict) {
    logError(CONFLICT_LOCATION, "doMerge", conflict.what());
    return refuse(conflict.what());
  }
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
  const auto conflict = conflictOf(delta->getOperation(), source != nullptr, distName);
  if (conflict) throw EditorException(*conflict);
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
  return explicitOperation(source != nullptr);
}

void TarnMerge::doOperationCreate(const LibTarnManagedObject* delta) {
  cmData_->addLibTarnManagedObject(
      *model::implementation<LibTarnManagedObjectImp>(*delta).clone(factory_));
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
