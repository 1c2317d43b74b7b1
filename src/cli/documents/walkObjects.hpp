#pragma once

#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// Returns the first managed object of a document in the order of the text, or null.
/// getNextSiblingElement() returns the others. This walk needs no index by name, which a document
/// builds when it is first asked for names in their order.
inline libtarn::model::LibTarnManagedObject* firstObject(
    const libtarn::model::LibTarnDocument& document) {
  using libtarn::model::LibTarnManagedObject;
  const libtarn::model::LibTarnCmData* const cmData = document.getLibTarnCmData();
  return cmData ? dynamic_cast<LibTarnManagedObject*>(
                      cmData->getFirstChildElement(LibTarnManagedObject::TAG_NAME))
                : nullptr;
}

}  // namespace tarn
