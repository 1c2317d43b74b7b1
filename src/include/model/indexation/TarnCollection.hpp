#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>  // for std::forward_iterator_tag: <iterator> would bring the streams

#include "libtarn/TarnApi.hpp"

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

/// What a walk follows when entries are added to an index or removed from it meanwhile. The
/// library's own indexes have one for each order.
template <class Entry>
struct EntrySource {
  /// How often entries were added or removed.
  std::uint32_t changes = 0;
};

/// Where an entry stands: itself and its piece, both null behind the last one.
template <class Entry>
struct EntryPlace {
  /// The parts.
  const Entry* entry = nullptr;
  const EntryRun<Entry>* run = nullptr;
  /// Whether it has the key that was asked for.
  bool hasKey = false;
  /// What tells of changes from then on.
  const EntrySource<Entry>* source = nullptr;
};

/// The first entry whose key is not before that of `entry`, in the index that `source` is of.
template <class Entry>
EntryPlace<Entry> placeOf(const EntrySource<Entry>& source, const Entry& entry);

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

template <>
TARN_API EntryPlace<ParameterEntry<Scalar>> placeOf(
    const EntrySource<ParameterEntry<Scalar>>& source, const ParameterEntry<Scalar>& entry);
template <>
TARN_API EntryPlace<ParameterEntry<List>> placeOf(const EntrySource<ParameterEntry<List>>& source,
                                                  const ParameterEntry<List>& entry);
template <>
TARN_API EntryPlace<ManagedObjectEntry> placeOf(const EntrySource<ManagedObjectEntry>& source,
                                                const ManagedObjectEntry& entry);

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

/// Where a range of a collection ends: only with the collection, ...
template <class Entry>
struct RangeEnd {
  /// Whether `entry` is the first one behind the range, which is found anew in `source`.
  static bool isAt(const Entry* /*entry*/) { return false; }
  static void find(const EntrySource<Entry>& /*source*/) {}
};

/// ... or, for managed objects of one class, before the first entry that is not before `bound`.
template <>
struct RangeEnd<ManagedObjectEntry> {
  /// As above.
  bool isAt(const ManagedObjectEntry* entry) const { return bound.key && entry == behind; }
  void find(const EntrySource<ManagedObjectEntry>& source) {
    if (bound.key) behind = placeOf(source, bound).entry;
  }

  /// Without a key there is none. `behind` is null at the end of the collection.
  ManagedObjectEntry bound{};
  const ManagedObjectEntry* behind = nullptr;
};

/// The entries of an index in order, or a range of them. Works in a range-for.
///
/// A value that borrows the index; it and its iterators are good as long as the index. Entries may
/// be added and removed during a walk, also the one that the walk is at: the walk goes on with what
/// follows it. It meets added entries that stand further on, but for those that were added to a
/// class during a walk through that class. A range-for over parameters gives references to entries,
/// which are good until the index changes.
///
/// A host that writes an index of its own makes a collection from an EntryRun; the index must then
/// not change during a walk.
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
    /// At `place`, which has a source, in a range up to `end`.
    iterator(const EntryPlace<Entry>& place, const RangeEnd<Entry>& end) : end_(end) {
      moveTo(place);
      arrive();
    }

    /// The item, and the entry behind it.
    reference operator*() const { return CollectionItem<Entry>::of(*operator->()); }
    pointer operator->() const {
      catchUp();
      if (isAhead_) settle();
      return current_;
    }

    /// To the next item.
    iterator& operator++() {
      catchUp();
      if (!isAhead_) {
        ++current_;
        leaveFinishedRuns();
      }
      if (source_) arrive();
      return *this;
    }
    iterator operator++(int) {
      const iterator before = *this;
      ++*this;
      return before;
    }

    /// Whether both are at the same entry, or at the end.
    bool operator==(const iterator& other) const { return current() == other.current(); }
    bool operator!=(const iterator& other) const { return !(*this == other); }

   private:
    const Entry* current() const {
      catchUp();
      return current_;
    }

    // Finds the entry again, or what follows it when it is gone: then the next step has been made.
    void catchUp() const {
      if (!source_ || source_->changes == seenChanges_) return;
      const EntryPlace<Entry> place = placeOf(*source_, entry_);
      isAhead_ = !place.hasKey;
      moveTo(place);
    }

    void moveTo(const EntryPlace<Entry>& place) const {
      current_ = place.entry;
      run_ = place.run;
      source_ = place.source;
      seenChanges_ = source_->changes;
      end_.find(*source_);
      if (end_.isAt(current_)) current_ = nullptr;
    }

    // What has come to the end stays there.
    void arrive() {
      if (end_.isAt(current_)) current_ = nullptr;
      if (!current_) source_ = nullptr;
      settle();
    }

    // The walk is now at the entry that it shows.
    void settle() const {
      isAhead_ = false;
      if (current_) entry_ = *current_;
    }

    // An end that is passed, not only one that is met: a run may have become shorter meanwhile.
    void leaveFinishedRuns() {
      while (run_ && current_ >= run_->end) {
        run_ = run_->next;
        current_ = run_ ? run_->begin : nullptr;
      }
    }

    mutable const Entry* current_ = nullptr;
    mutable const EntryRun<Entry>* run_ = nullptr;
    mutable const EntrySource<Entry>* source_ = nullptr;  // null when nothing is followed
    mutable std::uint32_t seenChanges_ = 0;
    mutable bool isAhead_ = false;  // of the entry that the walk was at, which is gone
    mutable Entry entry_{};         // that the walk is at
    mutable RangeEnd<Entry> end_;
  };
  /// Items cannot be changed.
  using const_iterator = iterator;

  /// No entries.
  TarnCollection() = default;
  TarnCollection(iterator begin, iterator end) : begin_(begin), end_(end) {}
  /// All entries of `run` and of those that follow it.
  explicit TarnCollection(const EntryRun<Entry>& run) : begin_(run.begin, &run) {}
  /// The entries from `first` on, which has a source, up to `end`.
  explicit TarnCollection(const EntryPlace<Entry>& first, const RangeEnd<Entry>& end = {})
      : begin_(first, end) {}

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
