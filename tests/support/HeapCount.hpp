#pragma once

#include <cstddef>

namespace tarn_test {

/// Calls of operator new in this program so far.
std::size_t heapAllocations();

/// Allocations of operator new that operator delete has not freed.
std::size_t heapBlocks();

/// Lets a call of operator new on this thread fail: it throws std::bad_alloc, or returns null in
/// the form that does not throw. Of the calls for at least `leastSize` bytes, the `number`-th from
/// now on fails, counted from 1; either that one only, or it and all that follow, as when memory
/// has run out. One fault at a time.
class HeapFault {
 public:
  enum class Lasts { ONCE, FROM_THEN_ON };

  explicit HeapFault(std::size_t number, std::size_t leastSize = 0, Lasts lasts = Lasts::ONCE);
  ~HeapFault();
  HeapFault(const HeapFault&) = delete;
  HeapFault& operator=(const HeapFault&) = delete;

  /// True if that call was reached.
  bool happened() const;
};

}  // namespace tarn_test
