#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>

#include "TarnApi.hpp"

namespace libtarn {
namespace model {

class LibTarnManagedObject;
class List;
class Scalar;

namespace indexation {

/// A piece of a collection: entries that lie one behind the other in memory, and the piece that
/// follows, null for the last one.
template <class Entry>
struct EntryRun {
  /// The first entry, the end behind the last one, and the next piece.
  const Entry* begin;
  const Entry* end;
  const EntryRun* next;
};

/// A parameter in an index: its name and the element.
template <class T>
using ParameterEntry = std::pair<const char*, T*>;

/// A managed object in an index: its key text, the element, and the number of its insertion.
struct ManagedObjectEntry {
  /// The parts; the key lives as long as the element keeps its name.
  const char* key;
  LibTarnManagedObject* object;
  std::size_t serial;
};

/// A managed object on its way into an index: its key text, a hash of it, and the element.
struct HashedObject {
  /// The parts.
  const char* key;
  LibTarnManagedObject* object;
  std::uint32_t hash;
};

/// What a step through a collection gives: the entry itself ...
template <class Entry>
struct CollectionItem {
  /// What a step gives, and how it is made of an entry.
  using type = const Entry&;
  static type of(const Entry& entry) { return entry; }
};

/// ... but for a managed object the element.
template <>
struct CollectionItem<ManagedObjectEntry> {
  /// What a step gives, and how it is made of an entry.
  using type = LibTarnManagedObject*;
  static type of(const ManagedObjectEntry& entry) { return entry.object; }
};

/// The entries of an index in order, or a range of them. Works in a range-for.
///
/// A value that borrows the index; it and its iterators are good until an entry is added to the
/// index or removed from it. A walk through all entries ends even then, but may miss entries or
/// meet removed ones. A host that writes an index of its own makes a collection from an EntryRun.
template <class Entry>
class TARN_API TarnCollection {
 public:
  /// A forward iterator over the entries.
  class iterator {
   public:
    /// As the standard library asks.
    using iterator_category = std::forward_iterator_tag;
    using reference = typename CollectionItem<Entry>::type;
    using value_type = std::decay_t<reference>;
    using difference_type = std::ptrdiff_t;
    using pointer = const Entry*;

    /// Behind the last entry of every collection.
    iterator() = default;
    /// `current` lies in `run` or is its end.
    iterator(const Entry* current, const EntryRun<Entry>* run) : current_(current), run_(run) {
      leaveFinishedRuns();
    }

    /// The item, and the entry behind it.
    reference operator*() const { return CollectionItem<Entry>::of(*current_); }
    pointer operator->() const { return current_; }

    /// To the next item.
    iterator& operator++() {
      ++current_;
      leaveFinishedRuns();
      return *this;
    }
    iterator operator++(int) {
      const iterator before = *this;
      ++*this;
      return before;
    }

    /// Whether both are at the same entry, or at the end.
    bool operator==(const iterator& other) const { return current_ == other.current_; }
    bool operator!=(const iterator& other) const { return !(*this == other); }

   private:
    // An end that is passed, not only one that is met: a run may have become shorter meanwhile.
    void leaveFinishedRuns() {
      while (run_ && current_ >= run_->end) {
        run_ = run_->next;
        current_ = run_ ? run_->begin : nullptr;
      }
    }

    const Entry* current_ = nullptr;
    const EntryRun<Entry>* run_ = nullptr;
  };
  /// Items cannot be changed.
  using const_iterator = iterator;

  /// No entries.
  TarnCollection() = default;
  TarnCollection(iterator begin, iterator end) : begin_(begin), end_(end) {}
  /// All entries of `run` and of those that follow it.
  explicit TarnCollection(const EntryRun<Entry>& run) : begin_(run.begin, &run) {}

  /// The range of the items.
  iterator begin() const { return begin_; }
  iterator end() const { return end_; }
  bool empty() const { return begin_ == end_; }

 private:
  iterator begin_;
  iterator end_;
};

/// Parameters by name: `first` is the name, `second` the element.
using ScalarCollection = TarnCollection<ParameterEntry<Scalar>>;
using ListCollection = TarnCollection<ParameterEntry<List>>;
/// Managed objects.
using ManagedObjectCollection = TarnCollection<ManagedObjectEntry>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
