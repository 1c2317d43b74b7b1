// Included by other headers; not for hosts.
#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

class LibTarnManagedObject;

namespace indexation {

/// Returns the shared key of a managed object: its class, "" when it has none. The text is the
/// element's own.
struct TARN_API ManagedObjectClassNameExtractor {
  const char* operator()(const LibTarnManagedObject* element) const;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
