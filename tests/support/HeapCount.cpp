#include "support/HeapCount.hpp"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> allocations{0};
std::atomic<std::size_t> blocks{0};

// The fault that is to happen or, once it has happened, to continue.
thread_local std::size_t callsBeforeFault = 0;
thread_local std::size_t leastSizeOfFault = 0;
thread_local bool isFaultSet = false;
thread_local bool faultLasts = false;
thread_local bool faultHappened = false;

bool mustFail(std::size_t size) {
  if (!isFaultSet || size < leastSizeOfFault) return false;
  if (faultHappened) return faultLasts;
  if (callsBeforeFault > 0) {
    --callsBeforeFault;
    return false;
  }
  faultHappened = true;
  return true;
}

void* allocate(std::size_t size) {
  ++allocations;
  if (mustFail(size)) return nullptr;
  void* const memory = std::malloc(size != 0 ? size : 1);
  if (memory) ++blocks;
  return memory;
}

void release(void* memory) {
  if (memory) --blocks;
  std::free(memory);
}

}  // namespace

namespace tarn_test {

std::size_t heapAllocations() { return allocations; }

std::size_t heapBlocks() { return blocks; }

HeapFault::HeapFault(std::size_t number, std::size_t leastSize, Lasts lasts) {
  callsBeforeFault = number - 1;
  leastSizeOfFault = leastSize;
  faultLasts = lasts == Lasts::FROM_THEN_ON;
  faultHappened = false;
  isFaultSet = true;
}

HeapFault::~HeapFault() { isFaultSet = false; }

bool HeapFault::happened() const { return faultHappened; }

}  // namespace tarn_test

void* operator new(std::size_t size) {
  if (void* const memory = allocate(size)) return memory;
  throw std::bad_alloc();
}

// All forms of the operators: those of a sanitizer would not call this one.
void* operator new[](std::size_t size) { return operator new(size); }

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return allocate(size);
}

void operator delete(void* memory) noexcept { release(memory); }

void operator delete(void* memory, std::size_t /*size*/) noexcept { release(memory); }

void operator delete[](void* memory) noexcept { release(memory); }

void operator delete[](void* memory, std::size_t /*size*/) noexcept { release(memory); }

void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { release(memory); }

void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept { release(memory); }
