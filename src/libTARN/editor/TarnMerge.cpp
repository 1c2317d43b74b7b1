// A delta is applied in two passes over its objects, in the order of their names. The first only
// looks for conflicts, so that a delta with one leaves the source as it is; the second changes the
// source. Each object costs one look-up by name in each pass and what its own content costs:
// nothing walks the source. Extensions, which have no index, are walked within one object.
//
// Everything that the source gets is a copy in its pool, made by its factory.

#include "editor/TarnMerge.hpp"

#include <map>
#include <sstream>
#include <string_view>

#include "../model/patternText.hpp"
#include "../util/LogLocation.hpp"
#include "Assertion.hpp"
#include "editor/exceptions/EditorException.hpp"
#include "model/LibTarnCmDataImp.hpp"
#include "model/LibTarnDocument.hpp"
#include "model/LibTarnExtensionImp.hpp"
#include "model/LibTarnHeaderImp.hpp"
#include "model/LibTarnManagedObjectImp.hpp"
#include "model/ListImp.hpp"
#include "model/ScalarImp.hpp"
#include "model/TypedChildren.hpp"
#include "util/Logger.hpp"

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
using model::Scalar;
using Operation = LibTarnManagedObject::Operation;

namespace {

// Hosts filter their logs by these locations, so that they stay whatever moves in this file.
constexpr const char* NO_SOURCE_LOCATION = "src/libTARN/editor/TarnMerge.cpp:41";
constexpr const char* NO_DELTA_LOCATION = "src/libTARN/editor/TarnMerge.cpp:49";
constexpr const char* CONFLICT_LOCATION = "src/libTARN/editor/TarnMerge.cpp:64";
constexpr const char* NO_SOURCE_FOR_OBJECT_LOCATION = "src/libTARN/editor/TarnMerge.cpp:266";

constexpr const char* NO_SOURCE_MESSAGE = "Source document doesn't have cmData node";

void logError(const char* location, const char* function, const char* message) {
  util::Logger(util::Logger::Level::ERROR, location, function) << message;
}

// `before` and `after` stand around "'managedObject' element with 'distName=NAME'".
[[noreturn]] void throwConflict(const char* before, const DistinguishedName& distName,
                                const char* after) {
  std::ostringstream message;
  message << before << "'" << LibTarnManagedObject::TAG_NAME << "' element with '"
          << DistinguishedName::ATTR_NAME << "=" << distName << "'" << after;
  throw EditorException(message.str());
}

template <class Imp, class Interface>
Imp& copyInto(util::TarnFactory& factory, const Interface& element) {
  return *model::implementation<Imp>(element).clone(factory);
}

}  // namespace

TarnMerge::TarnMerge(LibTarnDocument& source)
    : domDocument_(source.getItsTarnDomDocument()),
      cmData_(getCmData(source)),
      factory_(source.getFactory()) {}

bool TarnMerge::mergeDocument(LibTarnDocument& delta) {
  if (!cmData_) {
    logError(NO_SOURCE_LOCATION, "mergeDocument", NO_SOURCE_MESSAGE);
    return false;
  }
  if (delta.getItsTarnDomDocument() == domDocument_) {
    logError(TARN_LOG_LOCATION, "mergeDocument", "Source and delta are the same document");
    return false;
  }
  LibTarnCmDataImp* const deltaCmData = getCmData(delta);
  if (!deltaCmData) {
    logError(NO_DELTA_LOCATION, "mergeDocument", "Delta document doesn't have cmData node");
    return false;
  }
  return doMerge(deltaCmData);
}

LibTarnCmDataImp* TarnMerge::getCmData(LibTarnDocument& document) {
  LibTarnCmData* const cmData = document.getLibTarnCmData();
  return cmData ? &model::implementation<LibTarnCmDataImp>(*cmData) : nullptr;
}

bool TarnMerge::doMerge(LibTarnCmDataImp* delta) {
  try {
    goThroughAllDeltaMoWithExecutor(delta, &TarnMerge::checkForMergeConflicts);
    goThroughAllDeltaMoWithExecutor(delta, &TarnMerge::mergeDocuments);
  } catch (const EditorException& conflict) {
    logError(CONFLICT_LOCATION, "doMerge", conflict.what());
    return false;
  }
  addHeaders(delta);
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

// The delta learns what its "auto" came to before it is copied, and so does the copy.
void TarnMerge::mergeDocuments(LibTarnManagedObject* source, LibTarnManagedObject* delta,
                               const DistinguishedName& distName) {
  Operation operation = delta->getOperation();
  if (operation == Operation::AUTO) {
    operation = getExplicitOperationFromAutoOperation(source);
    delta->setOperation(operation);
  }
  if (operation == Operation::CREATE) {
    doOperationCreate(delta);
  } else if (operation == Operation::DELETE) {
    doOperationDelete(distName);
  } else {
    doOperationUpdate(source, delta);
  }
}

bool TarnMerge::mergeManagedObject(LibTarnManagedObject& delta) {
  if (!cmData_) {
    logError(NO_SOURCE_FOR_OBJECT_LOCATION, "mergeManagedObject", NO_SOURCE_MESSAGE);
    return false;
  }
  const DistinguishedName distName = delta.getDistName();
  LibTarnManagedObject* const source = cmData_->getLibTarnManagedObject(distName);
  Operation operation = delta.getOperation();
  if (operation == Operation::AUTO) operation = getExplicitOperationFromAutoOperation(source);

  const bool mustBeThere = operation != Operation::CREATE;
  if (mustBeThere != (source != nullptr)) return false;
  if (operation == Operation::CREATE) {
    doOperationCreate(&delta);
  } else if (operation == Operation::DELETE) {
    doOperationDelete(distName);
  } else {
    doOperationUpdate(source, &delta);
  }
  return true;
}

Operation TarnMerge::getExplicitOperationFromAutoOperation(const LibTarnManagedObject* source) {
  return source ? Operation::UPDATE : Operation::CREATE;
}

void TarnMerge::doOperationCreate(const LibTarnManagedObject* delta) {
  cmData_->addLibTarnManagedObject(copyInto<model::LibTarnManagedObjectImp>(factory_, *delta));
}

void TarnMerge::doOperationDelete(const DistinguishedName& distName) {
  cmData_->removeLibTarnManagedObject(distName);
}

void TarnMerge::doOperationUpdate(LibTarnManagedObject* source, const LibTarnManagedObject* delta) {
  TARN_ASSERT(source && delta, "source && delta");
  if (source == delta) return;
  updateScalars(source, delta);
  updateLists(source, delta);
  updateExtensions(source, delta);
}

void TarnMerge::updateScalars(LibTarnManagedObject* source, const LibTarnManagedObject* delta) {
  for (const auto& [name, parameter] : delta->getScalarParameters()) {
    if (Scalar* const current = source->getScalarParameter(name)) {
      current->setValue(parameter->getValue());
    } else {
      source->addParameter(copyInto<model::ScalarImp>(factory_, *parameter));
    }
  }
}

void TarnMerge::updateLists(LibTarnManagedObject* source, const LibTarnManagedObject* delta) {
  for (const auto& [name, list] : delta->getListParameters()) {
    source->removeListParameter(name);
    source->addParameter(copyInto<model::ListImp>(factory_, *list));
  }
}

// Removing and adding one by one would walk the source's extensions again for each of the delta's,
// and an earlier extension of a name would only be replaced by a later one.
void TarnMerge::updateExtensions(LibTarnManagedObject* source, const LibTarnManagedObject* delta) {
  std::map<std::string_view, const LibTarnExtension*> lastOfName;
  for (auto* extension = delta->getExtensions(); extension;
       extension = extension->getNextSiblingElement()) {
    lastOfName[model::textOrEmpty(extension->getName())] = extension;
  }
  if (lastOfName.empty()) return;

  LibTarnExtension* next = nullptr;
  for (auto* extension = source->getExtensions(); extension; extension = next) {
    next = extension->getNextSiblingElement();
    if (lastOfName.count(model::textOrEmpty(extension->getName())) > 0) {
      extension->removeThisElement();
    }
  }
  auto& target = model::implementation<model::LibTarnManagedObjectImp>(*source);
  for (auto* extension = delta->getExtensions(); extension;
       extension = extension->getNextSiblingElement()) {
    if (lastOfName[model::textOrEmpty(extension->getName())] != extension) continue;
    target.addChild(&copyInto<model::LibTarnExtensionImp>(factory_, *extension));
  }
}

void TarnMerge::addHeaders(LibTarnCmDataImp* delta) {
  TARN_ASSERT(cmData_ && delta, "cmData && delta");
  LibTarnHeader* const target = cmData_->getLibTarnHeader();
  const LibTarnHeader* const header = delta->getLibTarnHeader();
  if (!target || !header || header == target) return;
  model::implementation<model::LibTarnHeaderImp>(*target).addCopiesOfLogs(*header);
}

}  // namespace editor
}  // namespace libtarn
