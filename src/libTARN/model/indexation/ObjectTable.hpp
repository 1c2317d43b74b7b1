#pragma once

// A hash table of managed objects by name, in a pool.
//
// Entries lie in chunks, each twice as large as the one before, and are found by number, so that no
// entry ever moves. The number of a removed entry is used again. The slots hold hash and number:
// open addressing with linear probing. Removal moves slots back instead of leaving marks, so that
// the table does not degrade. To grow, the table needs only the hashes in the slots, not the names.
//
// The names come from documents, and an author who knows the hash can make as many names of one
// hash, or names for a row of slots, as they like. So no probe sequence is longer than MOST_PROBES.
// An insertion that would need a longer one reports that the table is crowded, and the index
// replaces the table by a tree. A search ends at that distance, since no entry is further away:
// growing and removing only bring entries closer.

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "../../text/textHash.hpp"
#include "HashedObject.hpp"
#include "libtarn/model/indexation/TarnAllocator.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// A table of entries by key. Keys must not change while they are in the table. When the pool is
/// out of memory, an operation throws std::bad_alloc and changes nothing.
class ObjectTable {
 public:
  enum class Added { YES, DUPLICATE, CROWDED };

  explicit ObjectTable(libDomXml::IMemoryPool* pool) : allocator_(pool) {}

  std::size_t size() const { return size_; }

  /// Adds an entry; adds nothing unless it returns YES.
  Added add(const ManagedObjectEntry& entry) {
    if (!slots_) {
      makeSlots(FIRST_CAPACITY);
    } else if (size_ >= mostEntries(capacity())) {
      growSlots();
    }
    return insert(entry, hashOf(entry.key));
  }

  /// Allocates what the next add() may need.
  void prepareAdd() {
    if (!slots_) {
      makeSlots(FIRST_CAPACITY);
    } else if (size_ >= mostEntries(capacity())) {
      growSlots();
    }
    if (free_ == 0) chunkOf(used_ + 1);
  }

  /// Returns true if add() would return CROWDED for an entry of that key, which is not in the
  /// table.
  bool isCrowdedFor(const char* key) const {
    if (!slots_) return false;
    const std::uint32_t hash = hashOf(key);
    std::size_t position = hash & mask_;
    std::size_t sameHashes = 0;
    for (std::size_t probes = 0; slots_[position].number != 0; ++probes) {
      if (slots_[position].hash == hash) ++sameHashes;
      if (probes == MOST_PROBES || sameHashes > MOST_SAME_HASHES) return true;
      position = (position + 1) & mask_;
    }
    return false;
  }

  /// Adds `count` entries to an empty table, with serials from `serial` on. Returns false when two
  /// have the same key, or when they crowd the table, which must then be dropped.
  bool addAll(const HashedObject* objects, std::size_t count, std::size_t serial) {
    std::size_t slots = FIRST_CAPACITY;
    while (mostEntries(slots) < count) slots *= 2;
    makeSlots(slots);
    for (std::size_t i = 0; i < count; ++i) {
      // The slots are scattered in memory: they are prefetched.
      if (i + AHEAD < count) __builtin_prefetch(&slots_[objects[i + AHEAD].hash & mask_], 1);
      const HashedObject& object = objects[i];
      if (insert({object.key, object.object, serial + i}, object.hash) != Added::YES) return false;
    }
    return true;
  }

  /// Returns the entry of that key, or null. Valid until it is removed.
  const ManagedObjectEntry* find(const char* key) const {
    if (!slots_) return nullptr;
    const std::size_t position = positionOf(key);
    return position == NOWHERE ? nullptr : &entryAt(slots_[position].number);
  }

  /// Removes the entry of that key. Returns false when there is none.
  bool erase(const char* key) {
    if (!slots_) return false;
    const std::size_t position = positionOf(key);
    if (position == NOWHERE) return false;
    const std::uint32_t number = slots_[position].number;
    closeGap(position);
    ManagedObjectEntry& entry = entryAt(number);
    entry.object = nullptr;
    entry.serial = free_;
    free_ = number;
    --size_;
    return true;
  }

  /// Calls `take` for every entry, in no particular order.
  template <class Take>
  void forEach(Take take) const {
    for (std::uint32_t number = 1; number <= used_; ++number) {
      const ManagedObjectEntry& entry = entryAt(number);
      if (entry.object) take(entry);
    }
  }

 private:
  static constexpr std::size_t FIRST_CAPACITY = 16;
  static constexpr std::size_t MOST_PROBES = 128;
  static constexpr std::size_t MOST_SAME_HASHES = 8;
  static constexpr std::size_t AHEAD = 8;
  static constexpr std::size_t NOWHERE = static_cast<std::size_t>(-1);
  static constexpr std::uint32_t FIRST_CHUNK = 8;  // entries, a power of two
  static constexpr std::size_t MOST_CHUNKS = 29;   // hold 2^32 entries

  struct Slot {
    std::uint32_t hash;
    std::uint32_t number;  // of the entry, from 1; 0 for an empty slot
  };

  Added insert(const ManagedObjectEntry& entry, std::uint32_t hash) {
    std::size_t position = hash & mask_;
    std::size_t probes = 0;
    std::size_t sameHashes = 0;
    for (; slots_[position].number != 0; position = (position + 1) & mask_) {
      if (holds(slots_[position], hash, entry.key)) return Added::DUPLICATE;
      if (slots_[position].hash == hash) ++sameHashes;
      if (++probes > MOST_PROBES || sameHashes > MOST_SAME_HASHES) return Added::CROWDED;
    }
    const std::uint32_t number = store(entry);
    slots_[position] = {hash, number};
    ++size_;
    return Added::YES;
  }

  static std::uint32_t hashOf(const char* key) { return textHash(key, std::strlen(key)); }

  std::size_t capacity() const { return mask_ + 1; }

  bool holds(const Slot& slot, std::uint32_t hash, const char* key) const {
    return slot.hash == hash && std::strcmp(entryAt(slot.number).key, key) == 0;
  }

  // Returns the slot of the key, or NOWHERE.
  std::size_t positionOf(const char* key) const {
    const std::uint32_t hash = hashOf(key);
    std::size_t position = hash & mask_;
    for (std::size_t probes = 0; slots_[position].number != 0; ++probes) {
      if (holds(slots_[position], hash, key)) return position;
      if (probes == MOST_PROBES) break;
      position = (position + 1) & mask_;
    }
    return NOWHERE;
  }

  // Returns the number of entries at which a table of `slots` slots grows.
  static std::size_t mostEntries(std::size_t slots) { return slots / 3 * 2; }

  void makeSlots(std::size_t newCapacity) {
    Slot* const slots = TarnAllocator<Slot>(allocator_).allocate(newCapacity);
    std::memset(slots, 0, newCapacity * sizeof(Slot));
    slots_ = slots;
    mask_ = newCapacity - 1;
  }

  // Doubles the slots and inserts their contents again. Starts after an empty slot, so that each
  // row of slots is inserted from its beginning. Every entry then lands no further from the slot of
  // its hash than before: the entries that were ahead of it in its row are inserted first.
  void growSlots() {
    const Slot* const old = slots_;
    const std::size_t oldCapacity = capacity();
    makeSlots(2 * oldCapacity);
    std::size_t start = 0;
    while (old[start].number != 0) ++start;
    for (std::size_t i = 1; i < oldCapacity; ++i) {
      const Slot& slot = old[(start + i) & (oldCapacity - 1)];
      if (slot.number == 0) continue;
      std::size_t position = slot.hash & mask_;
      while (slots_[position].number != 0) position = (position + 1) & mask_;
      slots_[position] = slot;
    }
  }

  // Empties the slot `gap`: moves an entry whose probes passed it into the gap, then fills the gap
  // that this leaves. The probes of an entry more than MOST_PROBES after a gap cannot have passed
  // it.
  void closeGap(std::size_t gap) {
    std::size_t next = (gap + 1) & mask_;
    while (slots_[next].number != 0 && ((next - gap) & mask_) <= MOST_PROBES) {
      const std::size_t home = slots_[next].hash & mask_;
      if (((next - home) & mask_) >= ((next - gap) & mask_)) {
        slots_[gap] = slots_[next];
        gap = next;
      }
      next = (next + 1) & mask_;
    }
    slots_[gap].number = 0;
  }

  // Entries

  struct Cell {
    std::size_t chunk;
    std::size_t index;
  };

  // Chunk n holds FIRST_CHUNK * 2^n entries.
  static Cell cellOf(std::uint32_t number) {
    const std::uint64_t shifted = std::uint64_t{number} - 1 + FIRST_CHUNK;
    const auto chunk = static_cast<std::size_t>(63 - __builtin_clzll(shifted / FIRST_CHUNK));
    return {chunk, static_cast<std::size_t>(shifted - (std::uint64_t{FIRST_CHUNK} << chunk))};
  }

  ManagedObjectEntry& entryAt(std::uint32_t number) const {
    const Cell cell = cellOf(number);
    return chunks_[cell.chunk][cell.index];
  }

  std::uint32_t store(const ManagedObjectEntry& entry) {
    if (free_ != 0) {
      const auto number = static_cast<std::uint32_t>(free_);
      free_ = entryAt(number).serial;
      entryAt(number) = entry;
      return number;
    }
    chunkOf(used_ + 1)[cellOf(used_ + 1).index] = entry;
    return ++used_;
  }

  // Returns the chunk of that number; allocates it when it is missing.
  ManagedObjectEntry* chunkOf(std::uint32_t number) {
    const std::size_t chunk = cellOf(number).chunk;
    if (!chunks_[chunk]) {
      chunks_[chunk] =
          TarnAllocator<ManagedObjectEntry>(allocator_).allocate(std::size_t{FIRST_CHUNK} << chunk);
    }
    return chunks_[chunk];
  }

  TarnAllocator<Slot> allocator_;
  Slot* slots_ = nullptr;
  std::size_t mask_ = 0;
  std::size_t size_ = 0;
  std::uint32_t used_ = 0;  // entries ever stored; the largest number
  std::size_t free_ = 0;    // number to use again, whose entry holds the next one; 0: none
  std::array<ManagedObjectEntry*, MOST_CHUNKS> chunks_{};
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
