#include "MappedRegion.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <limits>

#include "libtarn/DomDocument.hpp"

namespace libDomXml {

namespace {

constexpr std::size_t WORD = sizeof(void*);  // alignment of blocks

// The word before a block points to its region.
MappedRegion*& regionOf(void* block) { return static_cast<MappedRegion**>(block)[-1]; }

}  // namespace

MappedRegion* MappedRegion::map(std::size_t length) {
  void* const memory = DomDocument::mmapAlloc(length);
  if (!memory) return nullptr;
  char* const begin = static_cast<char*>(memory);
  auto* const region = static_cast<MappedRegion*>(memory);
  region->free_ = begin + sizeof(MappedRegion);
  region->end_ = begin + length;
  region->blocks_ = 0;
#ifdef MADV_HUGEPAGE
  // The map starts at a page, before the address that mmapAlloc() returns.
  if (length >= HUGE_PAGES_FROM) madvise(begin - sizeof(std::size_t), length, MADV_HUGEPAGE);
#endif
  return region;
}

void* MappedRegion::allocate(std::size_t size, void* newest) {
  if (size > std::numeric_limits<std::size_t>::max() / 2) return nullptr;
  const std::size_t needed = WORD + (size + WORD - 1) / WORD * WORD;
  MappedRegion* region = newest ? regionOf(newest) : nullptr;
  if (!region || static_cast<std::size_t>(region->end_ - region->free_) < needed) {
    const auto length =
        region ? static_cast<std::size_t>(region->end_ - reinterpret_cast<char*>(region)) : 0;
    const std::size_t least = sizeof(MappedRegion) + needed;
    const std::size_t preferred = std::max(least, std::min(2 * length, LARGEST));
    region = map(preferred);
    if (!region && preferred > least) region = map(least);
    if (!region) return nullptr;
  }
  void* const block = region->free_ + WORD;
  regionOf(block) = region;
  region->free_ += needed;
  ++region->blocks_;
  return block;
}

void MappedRegion::release(void* block) {
  MappedRegion* const region = regionOf(block);
  if (--region->blocks_ == 0) DomDocument::mmapFree(region);
}

}  // namespace libDomXml
