#pragma once

// The names of the parameters of one element after the other, put in order.
//
// Objects of one class usually have the same parameters in the same order. So the sequence of names
// that came last with a class is remembered, together with its sorted order. As long as the next
// names are those of the sequence, each entry is written to its sorted position at once, without
// sorting or comparing entries.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <numeric>
#include <string_view>
#include <vector>

#include "../../text/textHash.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {

/// Order of names: sorted and distinct, distinct in another order, or possibly duplicate.
enum class NameOrder { SORTED, DISTINCT, UNKNOWN };

/// The names of elements of one kind that have just been parsed. No name holds a NUL, and the
/// parsed text outlives this object.
template <class Element>
class ParsedNames {
 public:
  using Entry = indexation::ParameterEntry<Element>;

  /// Drops the elements and starts with those of another parent. `kind` is a text that parents with
  /// the same names usually share, such as a class.
  void start(std::string_view kind) {
    count_ = 0;
    const std::size_t ends = kind.empty() ? 0 : letter(kind.front()) + 7 * letter(kind.back());
    sequenceIndex_ = (5 * kind.size() + ends) % SEQUENCES;
    follows_ = !sequences_.empty();
    if (follows_) {
      known_ = &sequences_[sequenceIndex_];
    } else {
      names_.clear();
      others_.clear();
    }
  }

  /// Adds an element; `name` is NUL-terminated and points into the text.
  void add(std::string_view name, Element* element) {
    if (follows_ && count_ < known_->count && isSameName(name, known_->names[count_])) {
      ordered_[known_->positions[count_]] = {name.data(), element};
    } else {
      addToOthers(name, element);
    }
    ++count_;
  }

  /// Puts the entries in order; called once, after all elements have been added.
  NameOrder order() {
    if (follows_ && count_ == known_->count) return orderOfKnown();
    if (follows_) stopFollowing();
    if (count_ <= 1) return NameOrder::SORTED;
    if (count_ <= FEW) remember();
    if (count_ > FEW && areSorted()) return NameOrder::SORTED;
    const bool differ = (count_ <= FEW && digestsDiffer()) || namesDiffer();
    return differ ? NameOrder::DISTINCT : NameOrder::UNKNOWN;
  }

  /// Returns the entries; valid after order() and until the next start().
  const Entry* entries() const { return follows_ ? ordered_ : others_.data(); }
  /// Returns the number of entries.
  std::size_t size() const { return count_; }

 private:
  static constexpr std::size_t FEW = 32;
  static constexpr std::size_t SEQUENCES = 32;
  // A longer probe sequence comes only from names made to slow a load down.
  static constexpr std::size_t MOST_PROBES = 64;

  static std::size_t letter(char c) { return static_cast<unsigned char>(c); }

  // Compares here: names are so short that a call takes longer.
  static bool isSameName(std::string_view a, std::string_view b) {
    using Word = std::uint64_t;
    if (a.size() != b.size()) return false;
    if (a.size() < sizeof(Word)) return std::equal(a.begin(), a.end(), b.begin());
    const auto differ = [&a, &b](std::size_t offset) {
      Word first = 0;
      Word second = 0;
      std::memcpy(&first, a.data() + offset, sizeof(first));
      std::memcpy(&second, b.data() + offset, sizeof(second));
      return first ^ second;
    };
    const std::size_t last = a.size() - sizeof(Word);
    Word difference = differ(last);
    for (std::size_t offset = 0; offset < last; offset += sizeof(Word))
      difference |= differ(offset);
    return difference == 0;
  }

  // A sequence of names, and the position of each: in sorted order once sort() has returned true,
  // until then in the order of arrival.
  struct Sequence {
    std::size_t count = 0;
    std::string_view names[FEW];
    std::uint8_t positions[FEW];
    bool isSorted = false;

    void remember(const std::string_view* others, std::size_t othersCount) {
      count = othersCount;
      std::copy_n(others, count, names);
      std::iota(positions, positions + count, std::uint8_t{0});
      isSorted = false;
    }

    // Returns false, with nothing changed, when two names are equal.
    bool sort() {
      std::uint8_t sorted[FEW];
      std::uint8_t* const end = sorted + count;
      std::iota(sorted, end, std::uint8_t{0});
      std::sort(sorted, end, [this](auto a, auto b) { return names[a] < names[b]; });
      const auto same = [this](auto a, auto b) { return names[a] == names[b]; };
      if (std::adjacent_find(sorted, end, same) != end) return false;
      for (std::size_t i = 0; i < count; ++i) positions[sorted[i]] = static_cast<std::uint8_t>(i);
      isSorted = true;
      return true;
    }
  };

  struct Slot {
    std::uint32_t hash;
    std::uint32_t number;  // of the entry, from 1; 0 for an empty slot
  };

  // Allocated on first use: many documents have no element with two names.
  void remember() {
    if (sequences_.empty()) sequences_.resize(SEQUENCES);
    sequences_[sequenceIndex_].remember(names_.data(), count_);
  }

  NameOrder orderOfKnown() {
    if (known_->isSorted) return NameOrder::SORTED;
    Entry arrived[FEW];
    std::copy_n(ordered_, count_, arrived);
    if (!known_->sort()) return NameOrder::UNKNOWN;
    for (std::size_t i = 0; i < count_; ++i) ordered_[known_->positions[i]] = arrived[i];
    return NameOrder::SORTED;
  }

  void addToOthers(std::string_view name, Element* element) {
    if (follows_) stopFollowing();
    names_.push_back(name);
    others_.push_back({name.data(), element});
  }

  // Puts the entries so far back into the order of their arrival.
  void stopFollowing() {
    follows_ = false;
    names_.assign(known_->names, known_->names + count_);
    others_.resize(count_);
    for (std::size_t i = 0; i < count_; ++i) others_[i] = ordered_[known_->positions[i]];
  }

  // Returns a digest, made of the ends of a name, where most names differ. Names with different
  // digests are different.
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
    for (std::size_t i = 0; i < count_; ++i) {
      digests[i] = digestOf(names_[i]);
      for (std::size_t j = 0; j < i; ++j) same |= digests[i] == digests[j];
    }
    return !same;
  }

  bool areSorted() const {
    return std::adjacent_find(names_.begin(), names_.end(), std::greater_equal<>()) == names_.end();
  }

  // Returns false also when it would take too long to decide.
  bool namesDiffer() {
    std::size_t capacity = 8;
    while (capacity < 2 * count_) capacity *= 2;
    slots_.assign(capacity, Slot{0, 0});
    std::uint32_t number = 0;
    for (const std::string_view name : names_) {
      const std::uint32_t hash = indexation::textHash(name.data(), name.size());
      std::size_t position = hash & (capacity - 1);
      for (std::size_t probes = 0; slots_[position].number != 0; ++probes) {
        const Slot& slot = slots_[position];
        const bool isSame = slot.hash == hash && names_[slot.number - 1] == name;
        if (isSame || probes == MOST_PROBES) return false;
        position = (position + 1) & (capacity - 1);
      }
      slots_[position] = {hash, ++number};
    }
    return true;
  }

  // True while the names are those of `known_`; the entries are then in `ordered_`, otherwise in
  // `others_`, in the order of their arrival.
  bool follows_ = false;
  std::size_t count_ = 0;
  std::size_t sequenceIndex_ = 0;  // in `sequences_`, for this kind
  Sequence* known_ = nullptr;
  Entry ordered_[FEW];
  std::vector<std::string_view> names_;
  std::vector<Entry> others_;
  std::vector<Sequence> sequences_;
  std::vector<Slot> slots_;
};

}  // namespace model
}  // namespace libtarn
