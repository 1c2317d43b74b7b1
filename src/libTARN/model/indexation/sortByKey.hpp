#pragma once

// Sorts many entries by texts with common beginnings, as distinguished names have.
//
// A comparison of two texts reads both, somewhere in memory, and mostly the same beginning again.
// So this sort skips what all texts have in common, writes the next machine word of each text
// beside its entry, and sorts by these words. Entries with equal words are sorted in the same way
// by what follows. After a few such steps the texts themselves are compared, so that long texts
// cannot slow it down: O(n log n) comparisons at most.

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace libtarn {
namespace model {
namespace indexation {

/// An entry, which has a `key`, and a word of that key, first byte highest.
template <class Entry>
struct KeyedEntry {
  std::uintptr_t word;
  Entry entry;
};

template <class Entry, class Order>
class KeySorter {
 public:
  using Keyed = KeyedEntry<Entry>;

  /// Sorts by `Order::compare(const Entry&, const Entry&)`. It compares keys byte by byte, and
  /// equal keys by something else.
  static void sort(Keyed* begin, Keyed* end) { sortFrom(begin, end, 0, STEPS); }

 private:
  static constexpr int STEPS = 3;
  static constexpr std::ptrdiff_t FEW = 8;

  // Sorts entries whose keys are equal in the bytes before `start`.
  static void sortFrom(Keyed* begin, Keyed* end, std::size_t start, int steps) {
    if (end - begin < FEW || steps == 0) return sortByOrder(begin, end);
    start = commonPrefix(begin, end, start);
    for (Keyed* it = begin; it != end; ++it) it->word = wordAt(it->entry.key + start);
    std::sort(begin, end, [](const Keyed& a, const Keyed& b) { return a.word < b.word; });
    while (begin != end) {
      Keyed* const run = begin;
      while (begin != end && begin->word == run->word) ++begin;
      const bool isEnded = (run->word & 0xFFU) == 0;
      isEnded ? sortByOrder(run, begin)
              : sortFrom(run, begin, start + sizeof(run->word), steps - 1);
    }
  }

  static void sortByOrder(Keyed* begin, Keyed* end) {
    std::sort(begin, end,
              [](const Keyed& a, const Keyed& b) { return Order::compare(a.entry, b.entry) < 0; });
  }

  static std::size_t commonPrefix(const Keyed* begin, const Keyed* end, std::size_t start) {
    const char* const first = begin->entry.key;
    std::size_t common = start;
    while (first[common] != '\0') ++common;
    for (const Keyed* it = begin; it != end; ++it) {
      std::size_t same = start;
      while (same < common && it->entry.key[same] == first[same]) ++same;
      common = same;
    }
    return common;
  }

  // Returns the next bytes of `text` as a word, filled up with zeros after its end.
  static std::uintptr_t wordAt(const char* text) {
    std::uintptr_t word = 0;
    for (std::size_t i = 0; i < sizeof(word); ++i) {
      word = word << 8U | static_cast<unsigned char>(*text);
      if (*text != '\0') ++text;
    }
    return word;
  }
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
