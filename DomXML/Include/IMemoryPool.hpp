#pragma once

#include "libtarn/TarnApi.hpp"

namespace libDomXml {

/// Source of raw memory for everything that lives as long as one document.
///
/// Usually the document's own pool; a host may supply another. Memory is not given back piece by
/// piece: it is released with the pool. Used by one thread at a time.
class TARN_API IMemoryPool {
 public:
  virtual ~IMemoryPool() = default;

  /// Returns `size` bytes aligned to the size of a pointer, or null when the pool is out of memory.
  virtual void* allocateMemory(unsigned int size);

  /// Reports to the pool that `memory` is no longer used. A document's pool keeps it all the same.
  virtual void deallocateMemory(void* memory);
};

}  // namespace libDomXml
