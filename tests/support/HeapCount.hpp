#pragma once

#include <cstddef>

namespace tarn_test {

/// Calls of operator new in this program so far.
std::size_t heapAllocations();

/// What operator new has given and operator delete has not got back.
std::size_t heapBlocks();

/// Lets one call of operator new on this thread throw std::bad_alloc, or give null where that is
/// what it does: of those for at least `leastSize` bytes the `number`-th from now on, from 1. One
/// at a time.
class HeapFault {
 public:
  explicit HeapFault(std::size_t number, std::size_t leastSize = 0);
  ~HeapFault();
  HeapFault(const HeapFault&) = delete;
  HeapFault& operator=(const HeapFault&) = delete;

  /// Whether it has come to that call.
  bool happened() const;
};

}  // namespace tarn_test
