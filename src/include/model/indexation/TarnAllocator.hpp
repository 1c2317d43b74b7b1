#pragma once

#include <cstddef>
#include <limits>
#include <new>

#include "libtarn/IMemoryPool.hpp"
#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// A standard allocator over a document's pool. Allocators over one pool are equal.
template <class T>
class TARN_API TarnAllocator {
 public:
  /// Type of the objects.
  using value_type = T;

  /// Allocates from `pool`, which must outlive what is allocated.
  explicit TarnAllocator(libDomXml::IMemoryPool* pool) : pool_(pool) {}
  /// An allocator for another type, from the same pool.
  template <class Other>
  TarnAllocator(const TarnAllocator<Other>& other) : pool_(other.getPool()) {}  // NOLINT: rebinds

  /// Returns room for `count` objects. Throws std::bad_alloc when their size does not fit an
  /// unsigned int or the pool is out of memory.
  T* allocate(std::size_t count) {
    static_assert(alignof(T) <= alignof(void*), "a pool aligns to the size of a pointer");
    if (count > std::numeric_limits<unsigned int>::max() / sizeof(T)) throw std::bad_alloc();
    void* const memory = pool_->allocateMemory(static_cast<unsigned int>(count * sizeof(T)));
    if (!memory) throw std::bad_alloc();
    return static_cast<T*>(memory);
  }

  /// Reports the memory to the pool's deallocateMemory(). A document's pool keeps it.
  void deallocate(T* memory, std::size_t /*count*/) { pool_->deallocateMemory(memory); }

  /// Returns the pool.
  libDomXml::IMemoryPool* getPool() const { return pool_; }

 private:
  libDomXml::IMemoryPool* pool_;
};

template <class A, class B>
bool operator==(const TarnAllocator<A>& a, const TarnAllocator<B>& b) {
  return a.getPool() == b.getPool();
}

template <class A, class B>
bool operator!=(const TarnAllocator<A>& a, const TarnAllocator<B>& b) {
  return !(a == b);
}

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
