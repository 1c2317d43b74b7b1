#pragma once

#include <cstddef>

namespace tarn_test {

/// Calls of operator new in this program so far.
std::size_t heapAllocations();

/// What operator new has given and operator delete has not got back.
std::size_t heapBlocks();

/// Lets a call of operator new on this thread throw std::bad_alloc, or give null where that is what
/// it does: of those for at least `leastSize` bytes the `number`-th from now on, from 1. Either
/// that one only, or it and all that follow, as when memory has ended. One fault at a time.
class HeapFault {
 public:
  enum class Lasts { ONCE, FROM_THEN_ON };

  explicit HeapFault(std::size_t number, std::size_t leastSize = 0, Lasts lasts = Lasts::ONCE);
  ~HeapFault();
  HeapFault(const HeapFault&) = delete;
  HeapFault& operator=(const HeapFault&) = delete;

  /// Whether it has come to that call.
  bool happened() const;
};

}  // namespace tarn_test
