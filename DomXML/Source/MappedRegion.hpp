#pragma once

#include <cstddef>

namespace libDomXml {

/// Memory maps from which the blocks of one pool are cut.
///
/// A map for each block would leave the kernel to fill in page after page of a large document. So
/// the maps of a pool grow with it: the first one holds a single block, each further one twice as
/// much as the one before, up to LARGEST, or a single block when there is no room for that; those
/// from HUGE_PAGES_FROM on ask for huge pages. Memory that is not touched is not taken from the
/// system, but that a huge page comes as a whole.
///
/// Region, as mapped:
///
///   | header | region | block           | region | block           | free ...        |
///
/// A map goes back to the system with its last block. One thread at a time for the blocks of one
/// pool.
class MappedRegion {
 public:
  static constexpr std::size_t HUGE_PAGES_FROM = std::size_t{4} << 20U;
  static constexpr std::size_t LARGEST = std::size_t{1} << (sizeof(void*) > 4 ? 25U : 22U);

  /// A block of `size` bytes, aligned to the size of a pointer, for a pool whose newest block is
  /// `newest` (null: it has none). Null when there is no memory.
  static void* allocate(std::size_t size, void* newest);
  static void release(void* block);

 private:
  static MappedRegion* map(std::size_t length);

  char* free_;
  char* end_;
  std::size_t blocks_;
};

}  // namespace libDomXml
