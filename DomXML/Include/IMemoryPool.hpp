#pragma once

#include "libtarn/TarnApi.hpp"

namespace libDomXml {

/// Source of raw memory for everything that lives as long as one document.
///
/// The document's own pool is the usual one; a host may hand in another. Memory is not given back
/// piece by piece: it goes when the pool goes. Used by one thread at a time.
class TARN_API IMemoryPool {
 public:
  virtual ~IMemoryPool() = default;

  /// `size` bytes aligned to the size of a pointer, or null when this pool has no memory.
  virtual void* allocateMemory(unsigned int size);

  /// Tells the pool that `memory` is no longer used. A document's pool keeps it all the same.
  virtual void deallocateMemory(void* memory);
};

}  // namespace libDomXml
