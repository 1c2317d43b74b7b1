#pragma once

#include <cstddef>

namespace libDomXml {

/// Memory map from which blocks of one pool are cut.
///
/// With a map for each block, the kernel would fill in a large document page by page. So the maps
/// of a pool grow: the first one holds a single block, each further one is twice as large as the
/// one before, up to LARGEST. When there is no room for that, it holds a single block. Maps of
/// HUGE_PAGES_FROM bytes or more ask for huge pages. The system provides only memory that is
/// touched, but a huge page as a whole.
///
/// Region, as mapped:
///
///   | header | region | block           | region | block           | free ...        |
///
/// A map is given back to the system with its last block. The blocks of one pool are used by one
/// thread at a time.
class MappedRegion {
 public:
  static constexpr std::size_t HUGE_PAGES_FROM = std::size_t{4} << 20U;
  static constexpr std::size_t LARGEST = std::size_t{1} << (sizeof(void*) > 4 ? 25U : 22U);

  /// Returns a block of `size` bytes, aligned to the size of a pointer, for a pool whose newest
  /// block is `newest` (null: it has none). Returns null when there is no memory.
  static void* allocate(std::size_t size, void* newest);
  /// Returns a block to its map, and the map to the system after its last block.
  static void release(void* block);

 private:
  static MappedRegion* map(std::size_t length);

  char* free_;
  char* end_;
  std::size_t blocks_;
};

}  // namespace libDomXml
