#pragma once

#include <cstdint>

namespace libtarn {
namespace model {

class LibTarnManagedObject;

namespace indexation {

/// A managed object that is about to be indexed: its distinguished name, the element, and
/// textHash() of the name. The name lives as long as the element keeps it.
struct HashedObject {
  const char* key;
  LibTarnManagedObject* object;
  std::uint32_t hash;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
