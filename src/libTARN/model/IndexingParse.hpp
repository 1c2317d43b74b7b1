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

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

#include "DomElement.hpp"
#include "attributeNames.hpp"
#include "indexation/textHash.hpp"
#include "model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {

class LibTarnManagedObjectImp;

/// How the names of entries are to one another. UNKNOWN: some may be the same.
enum class NameOrder { SORTED, DIFFERENT, UNKNOWN };

/// Elements of one kind just parsed, with their names. The text that they were parsed from holds no
/// zero byte, and stays.
///
/// Objects of one class mostly have the same parameters in the same order. So a sequence of names
/// is remembered, and once it has come again, how it is sorted; names that are the same need no
/// other look.
template <class Element>
class ParsedNames {
 public:
  using Entry = indexation::ParameterEntry<Element>;

  void clear() { found_.clear(); }

  /// `node` is the element as a node. False when it has no name.
  bool add(const libDomXml::DomElement& node, Element* element) {
    const rapidxml::xml_attribute<char>* const name =
        node.first_attribute(NAME_ATTRIBUTE, sizeof(NAME_ATTRIBUTE) - 1);
    found_.push_back(
        {std::string_view(name ? name->value() : "", name ? name->value_size() : 0), element});
    return name != nullptr;
  }

  bool empty() const { return found_.empty(); }

  /// Makes the entries, in the order that is told.
  NameOrder order() {
    entries_.resize(found_.size());
    if (found_.size() >= LEAST_REMEMBERED && found_.size() <= FEW) {
      Sequence& sequence = sequenceLikeThis();
      if (sequence.hasNames(found_)) return makeEntriesBy(sequence);
      sequence.remember(found_);
    }
    for (std::size_t i = 0; i < found_.size(); ++i) entries_[i] = entryOf(found_[i]);
    if (found_.size() <= FEW ? found_.size() <= 1 : areSorted()) return NameOrder::SORTED;
    const bool differ = (found_.size() <= FEW && digestsDiffer()) || namesDiffer();
    return differ ? NameOrder::DIFFERENT : NameOrder::UNKNOWN;
  }

  const std::vector<Entry>& entries() const { return entries_; }

 private:
  static constexpr std::size_t FEW = 32;
  static constexpr std::size_t SEQUENCES = 32;
  // Fewer are sorted as fast as they are compared.
  static constexpr std::size_t LEAST_REMEMBERED = 4;
  // Names that crowd are made by those who want to slow a load down.
  static constexpr std::size_t MOST_PROBES = 64;

  struct Found {
    std::string_view name;  // as it stands in the text
    Element* element;
  };
  using Names = std::vector<Found>;

  static Entry entryOf(const Found& found) { return {found.name.data(), found.element}; }

  // Names are so short that a call takes longer.
  static bool isSameName(std::string_view a, std::string_view b) {
    using Word = std::uint64_t;
    if (a.size() != b.size()) return false;
    if (a.size() < sizeof(Word)) return a == b;
    const auto differ = [&a, &b](std::size_t place) {
      Word first = 0;
      Word second = 0;
      std::memcpy(&first, a.data() + place, sizeof(first));
      std::memcpy(&second, b.data() + place, sizeof(second));
      return first ^ second;
    };
    const std::size_t last = a.size() - sizeof(Word);
    Word difference = differ(last);
    for (std::size_t place = 0; place < last; place += sizeof(Word)) difference |= differ(place);
    return difference == 0;
  }

  struct Sequence {
    std::size_t count = 0;
    std::string_view names[FEW];
    std::uint8_t sorted[FEW];  // numbers of names, in the order of the names
    bool isSorted = false;

    bool hasNames(const Names& others) const {
      return count == others.size() &&
             std::equal(others.begin(), others.end(), names,
                        [](const Found& a, std::string_view b) { return isSameName(a.name, b); });
    }
    void remember(const Names& others) {
      count = others.size();
      std::transform(others.begin(), others.end(), names,
                     [](const Found& each) { return each.name; });
      isSorted = false;
    }
    // False when two are the same.
    bool sort() {
      std::uint8_t* const end = sorted + count;
      std::iota(sorted, end, std::uint8_t{0});
      std::sort(sorted, end, [this](auto a, auto b) { return names[a] < names[b]; });
      isSorted = std::adjacent_find(sorted, end,
                                    [this](auto a, auto b) { return names[a] == names[b]; }) == end;
      return isSorted;
    }
  };

  struct Slot {
    std::uint32_t hash;
    std::uint32_t number;  // of the entry, from 1; 0 for an empty slot
  };

  // Where a sequence of so many names that begins like this one is, if it is known.
  Sequence& sequenceLikeThis() {
    if (sequences_.empty()) sequences_.resize(SEQUENCES);
    const std::string_view first = found_.front().name;
    const auto letter = static_cast<unsigned char>(first.empty() ? '\0' : first.front());
    const std::size_t digest = 5 * found_.size() + first.size() + letter;
    return sequences_[digest % SEQUENCES];
  }

  NameOrder makeEntriesBy(Sequence& sequence) {
    if (!sequence.isSorted && !sequence.sort()) return NameOrder::UNKNOWN;
    for (std::size_t i = 0; i < sequence.count; ++i) {
      entries_[i] = entryOf(found_[sequence.sorted[i]]);
    }
    return NameOrder::SORTED;
  }

  // Names of different digests are different. Made of the ends of a name, where most differ.
  static std::uint32_t digestOf(std::string_view name) {
    constexpr std::uint64_t PRIME = 0x9E3779B97F4A7C15U;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (name.size() >= sizeof(first)) {
      std::memcpy(&first, name.data(), sizeof(first));
      std::memcpy(&last, name.data() + name.size() - sizeof(last), sizeof(last));
    } else {
      for (const char c : name) last = last << 8U | static_cast<unsigned char>(c);
    }
    return static_cast<std::uint32_t>(((first ^ name.size()) * PRIME ^ last) * PRIME >> 32U);
  }

  bool digestsDiffer() const {
    std::uint32_t digests[FEW];
    bool same = false;
    for (std::size_t i = 0; i < found_.size(); ++i) {
      digests[i] = digestOf(found_[i].name);
      for (std::size_t j = 0; j < i; ++j) same |= digests[i] == digests[j];
    }
    return !same;
  }

  bool areSorted() const {
    return std::adjacent_find(found_.begin(), found_.end(), [](const Found& a, const Found& b) {
             return b.name <= a.name;
           }) == found_.end();
  }

  // False also when it is too hard to tell.
  bool namesDiffer() {
    std::size_t capacity = 8;
    while (capacity < 2 * found_.size()) capacity *= 2;
    slots_.assign(capacity, Slot{0, 0});
    std::uint32_t number = 0;
    for (const auto& [name, element] : found_) {
      const std::uint32_t hash = indexation::textHash(name.data(), name.size());
      std::size_t position = hash & (capacity - 1);
      for (std::size_t probes = 0; slots_[position].number != 0; ++probes) {
        const Slot& slot = slots_[position];
        const bool isSame = slot.hash == hash && found_[slot.number - 1].name == name;
        if (isSame || probes == MOST_PROBES) return false;
        position = (position + 1) & (capacity - 1);
      }
      slots_[position] = {hash, ++number};
    }
    return true;
  }

  Names found_;
  std::vector<Entry> entries_;
  std::vector<Sequence> sequences_;
  std::vector<Slot> slots_;
};

/// What has been parsed, and what is used again for one object after the other.
struct IndexingParse {
  /// The objects of every cmData, those of one of them in a row, as long as all is plain.
  std::vector<indexation::HashedObject> objects;
  /// Those of them that have an operation.
  std::vector<LibTarnManagedObjectImp*> withOperation;
  /// A zero byte, written as a reference, has been read: nothing is plain.
  bool zeroByte = false;
  /// Whether all that has been parsed below cmData is known to follow the rules of the format;
  /// false from the start when nobody asks. The rules themselves are the Validator's: what is found
  /// here to follow them needs no walk with it, and whatever is not is left to that walk.
  bool followsRules = false;
  /// Each object is forgotten once it has been looked at, and its memory used for the next one. The
  /// parse ends with an Unknown as soon as anything is not plain or not known to follow the rules.
  bool forgetsObjects = false;

  struct Unknown {};

  ParsedNames<Scalar> scalars;
  ParsedNames<List> lists;
  ParsedNames<Scalar> components;
};

}  // namespace model
}  // namespace libtarn
