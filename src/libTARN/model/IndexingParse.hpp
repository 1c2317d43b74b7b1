#pragma once

// Indexing while parsing.
//
// A document's indexes are filled in the order of the document, and the first object or parameter
// whose name is taken ends that. But doing so once the parse is done means going through all of the
// document's memory a second time. So each managed object is indexed as soon as its end tag has
// been read, when it is still in the caches, and what is filled then comes into effect for all
// objects of a cmData at once, when the parse is done (see addOnceTrue() of the indexes).
//
// Only what is plain is done that way. As soon as anything is not (a name that is there already, an
// operation that is unknown, indexes of the host's own), the cmData drops what has been filled and
// is indexed in order after the parse, which then tells what is wrong.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "attributeNames.hpp"
#include "indexation/textHash.hpp"
#include "model/indexation/TarnCollection.hpp"
#include "patternText.hpp"

namespace libtarn {
namespace model {

/// The name of an element in its index.
template <class Element>
const char* indexedName(const Element& element) {
  return textOrEmpty(element.getLiteralAttribute(NAME_ATTRIBUTE));
}

class LibTarnManagedObjectImp;

/// How the names of entries are to one another. UNKNOWN: some may be the same.
enum class NameOrder { SORTED, DIFFERENT, UNKNOWN };

/// What has been parsed, and what is used again for one object after the other.
class IndexingParse {
 public:
  /// The objects of every cmData, those of one of them in a row, as long as all is plain.
  std::vector<indexation::HashedObject> objects;
  /// Those of them that have an operation.
  std::vector<LibTarnManagedObjectImp*> withOperation;

  std::vector<indexation::ParameterEntry<Scalar>> scalars;
  std::vector<indexation::ParameterEntry<List>> lists;
  std::vector<indexation::ParameterEntry<Scalar>> components;

  template <class Entry>
  NameOrder orderOf(const std::vector<Entry>& entries) {
    std::size_t sorted = 1;
    while (sorted < entries.size() &&
           std::strcmp(entries[sorted - 1].first, entries[sorted].first) < 0) {
      ++sorted;
    }
    if (sorted >= entries.size()) return NameOrder::SORTED;
    return differ(entries) ? NameOrder::DIFFERENT : NameOrder::UNKNOWN;
  }

 private:
  // Names that crowd are made by those who want to slow a load down.
  static constexpr std::size_t MOST_PROBES = 64;

  struct Slot {
    std::uint32_t hash;
    std::uint32_t number;  // of the entry, from 1; 0 for an empty slot
  };

  // False also when it is too hard to tell.
  template <class Entry>
  bool differ(const std::vector<Entry>& entries) {
    std::size_t capacity = 8;
    while (capacity < 2 * entries.size()) capacity *= 2;
    slots_.assign(capacity, Slot{0, 0});
    std::uint32_t number = 0;
    for (const Entry& entry : entries) {
      const std::uint32_t hash = indexation::textHash(entry.first, std::strlen(entry.first));
      std::size_t position = hash & (capacity - 1);
      for (std::size_t probes = 0; slots_[position].number != 0; ++probes) {
        const Slot& slot = slots_[position];
        const bool isSame =
            slot.hash == hash && std::strcmp(entries[slot.number - 1].first, entry.first) == 0;
        if (isSame || probes == MOST_PROBES) return false;
        position = (position + 1) & (capacity - 1);
      }
      slots_[position] = {hash, ++number};
    }
    return true;
  }

  std::vector<Slot> slots_;
};

}  // namespace model
}  // namespace libtarn
