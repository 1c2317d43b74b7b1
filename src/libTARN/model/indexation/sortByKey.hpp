#pragma once

// Sorting of many entries by texts that begin alike, as distinguished names do.
//
// A comparison of two texts looks at both, somewhere in memory, and mostly at the same beginning
// again. So what all texts have in common is skipped, the machine word behind it is put beside each
// entry, and the entries are sorted by these; those that are equal in them are sorted in the same
// way by what follows. After a few such steps the texts themselves are compared, so that no text,
// however long, makes it go on for long: O(n log n) comparisons at most.

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace libtarn {
namespace model {
namespace indexation {

/// An entry, which has a `key`, and some bytes of it, the first one highest.
template <class Entry>
struct KeyedEntry {
  std::uintptr_t word;
  Entry entry;
};

template <class Entry, class Order>
class KeySorter {
 public:
  using Keyed = KeyedEntry<Entry>;

  /// Sorts by `Order::compare(const Entry&, const Entry&)`, which compares keys byte by byte and
  /// decides between equal ones by something else.
  static void sort(Keyed* begin, Keyed* end) { sortFrom(begin, end, 0, STEPS); }

 private:
  static constexpr int STEPS = 3;
  static constexpr std::ptrdiff_t FEW = 8;

  // All keys are alike in the bytes before `start`.
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

  // Zeros stand for what is behind the end of the text.
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
