#pragma once

#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// The operation that an object carries, or "".
inline const char* operationText(const libtarn::model::LibTarnManagedObject& object) {
  return object.hasOperation() ? object.getOperation().toString().c_str() : "";
}

}  // namespace tarn
