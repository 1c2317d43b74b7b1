// Included by other headers; not for hosts.
#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

class LibTarnManagedObject;

namespace indexation {

/// The key of an index: the distinguished name of a managed object, "" when it has none. The text
/// is the element's own.
struct TARN_API ManagedObjectDistNameExtractor {
  const char* operator()(const LibTarnManagedObject* element) const;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
