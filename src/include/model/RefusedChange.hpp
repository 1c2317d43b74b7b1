#pragma once

#include "libtarn/model/Diagnostic.hpp"

namespace libtarn {
namespace model {

class LibTarnManagedObject;

/// A managed object that a change by mask did not change as asked.
struct RefusedChange {
  /// The object, which stays its document's.
  LibTarnManagedObject* object;
  /// Why, as LibTarnManagedObject::tryChange() says it.
  Diagnostic reason;
};

}  // namespace model
}  // namespace libtarn
