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

/// A piece of a collection: entries that are adjacent in memory, and the next piece.
template <class Entry>
struct EntryRun {
  /// First entry.
  const Entry* begin;
  /// End, one past the last entry.
  const Entry* end;
  /// Next piece, or null for the last one.
  const EntryRun* next;
};

/// A sequence of entries that may change while iterators are in it. Each order of the library's own
/// indexes is one.
template <class Entry>
struct EntrySequence {
  /// Number of changes so far: entries added or removed.
  std::uint32_t changes = 0;
};

/// Position of an entry in a sequence, or of its end.
template <class Entry>
struct EntryPosition {
  /// The entry, or null at the end.
  const Entry* entry = nullptr;
  /// The piece that holds the entry, or null at the end.
  const EntryRun<Entry>* run = nullptr;
  /// True if the entry has exactly the key that was looked up.
  bool hasKey = false;
  /// The sequence, for iterators that are to find their entry again after a change. Null: none.
  const EntrySequence<Entry>* sequence = nullptr;
};

/// Returns the position of the first entry of `sequence` whose key is not before that of `entry`.
template <class Entry>
EntryPosition<Entry> lowerBound(const EntrySequence<Entry>& sequence, const Entry& entry);

/// A parameter in an index: its name and the element.
template <class T>
using ParameterEntry = std::pair<const char*, T*>;

/// A managed object in an index.
struct ManagedObjectEntry {
  /// Key text, which lives as long as the element keeps its name.
  const char* key;
  /// The element.
  LibTarnManagedObject* object;
  /// Number of the insertion: orders entries with equal keys.
  std::size_t serial;
};

template <>
TARN_API EntryPosition<ParameterEntry<Scalar>> lowerBound(
    const EntrySequence<ParameterEntry<Scalar>>& sequence, const ParameterEntry<Scalar>& entry);
template <>
TARN_API EntryPosition<ParameterEntry<List>> lowerBound(
    const EntrySequence<ParameterEntry<List>>& sequence, const ParameterEntry<List>& entry);
template <>
TARN_API EntryPosition<ManagedObjectEntry> lowerBound(
    const EntrySequence<ManagedObjectEntry>& sequence, const ManagedObjectEntry& entry);

/// What an iterator over a collection returns for an entry: the entry itself.
template <class Entry>
struct CollectionItem {
  /// Type that an iterator returns.
  using type = const Entry&;
  /// Returns what an iterator returns for `entry`.
  static type of(const Entry& entry) { return entry; }
};

/// What an iterator over managed objects returns for an entry: the element.
template <>
struct CollectionItem<ManagedObjectEntry> {
  /// Type that an iterator returns.
  using type = LibTarnManagedObject*;
  /// Returns what an iterator returns for `entry`.
  static type of(const ManagedObjectEntry& entry) { return entry.object; }
};

/// End of a range of parameters: always the end of the sequence.
template <class Entry>
struct RangeEnd {
  /// Returns true if `entry` is the first one after the range.
  static bool isAt(const Entry* /*entry*/) { return false; }
  /// Looks the end up again, after a change of `sequence`.
  static void find(const EntrySequence<Entry>& /*sequence*/) {}
};

/// End of a range of managed objects: the end of the sequence, or the first entry that is not
/// before `bound`.
template <>
struct RangeEnd<ManagedObjectEntry> {
  /// Returns true if `entry` is the first one after the range.
  bool isAt(const ManagedObjectEntry* entry) const { return bound.key && entry == pastEnd; }
  /// Looks the end up again, after a change of `sequence`.
  void find(const EntrySequence<ManagedObjectEntry>& sequence) {
    if (bound.key) pastEnd = lowerBound(sequence, bound).entry;
  }

  /// Key before which the range ends; without a key, the range ends with the sequence.
  ManagedObjectEntry bound{};
  /// First entry after the range; null at the end of the sequence.
  const ManagedObjectEntry* pastEnd = nullptr;
};

/// The entries of an index in order, or a range of them. Works in a range-for.
///
/// A value that borrows the index; it and its iterators are valid as long as the index. Entries may
/// be added and removed while iterators are in the collection, also the current entry of an
/// iterator: the iterator then continues with the next one. It also reaches entries that were added
/// after its position, except those added to a class during an iteration over that class. A
/// range-for over parameters yields references to entries, which are valid until the index changes.
///
/// A host that writes its own index makes a collection of an EntryRun. That index must not change
/// during an iteration.
template <class Entry>
class TARN_API TarnCollection {
 public:
  /// Forward iterator over the entries.
  class iterator {
   public:
    /// Tag that the standard library asks for.
    using iterator_category = std::forward_iterator_tag;
    /// Type that a dereference returns.
    using reference = typename CollectionItem<Entry>::type;
    /// Type of an item.
    using value_type = std::decay_t<reference>;
    /// Type that the standard library asks for.
    using difference_type = std::ptrdiff_t;
    /// Type that operator->() returns.
    using pointer = const Entry*;

    /// The end of every collection.
    iterator() = default;
    /// Starts at `current`, an entry or the end of `run`.
    iterator(const Entry* current, const EntryRun<Entry>* run) : current_(current), run_(run) {
      leaveFinishedRuns();
    }
    /// Starts at `position`, which has a sequence, in a range up to `end`.
    iterator(const EntryPosition<Entry>& position, const RangeEnd<Entry>& end) : end_(end) {
      moveTo(position);
      stopAtEnd();
    }

    /// Returns the item.
    reference operator*() const { return CollectionItem<Entry>::of(*operator->()); }
    /// Returns the entry of the item.
    pointer operator->() const {
      catchUp();
      if (hasAdvanced_) settle();
      return current_;
    }

    /// Advances to the next item.
    iterator& operator++() {
      catchUp();
      if (!hasAdvanced_) {
        ++current_;
        leaveFinishedRuns();
      }
      if (sequence_) stopAtEnd();
      return *this;
      /// Advances to the next item. Returns the position before.
    }
    iterator operator++(int) {
      const iterator before = *this;
      ++*this;
      return before;
    }

    /// Returns true if both are at the same entry, or both at the end.
    bool operator==(const iterator& other) const { return current() == other.current(); }
    /// Returns true if the two are at different entries.
    bool operator!=(const iterator& other) const { return !(*this == other); }

   private:
    const Entry* current() const {
      catchUp();
      return current_;
    }

    // After a change, finds the entry again. When it was removed, finds the next entry: the
    // iterator has then advanced already.
    void catchUp() const {
      if (!sequence_ || sequence_->changes == seenChanges_) return;
      const EntryPosition<Entry> position = lowerBound(*sequence_, entry_);
      hasAdvanced_ = !position.hasKey;
      moveTo(position);
    }

    void moveTo(const EntryPosition<Entry>& position) const {
      current_ = position.entry;
      run_ = position.run;
      sequence_ = position.sequence;
      seenChanges_ = sequence_->changes;
      end_.find(*sequence_);
      if (end_.isAt(current_)) current_ = nullptr;
    }

    // An iterator that has reached the end stays there, whatever is added.
    void stopAtEnd() {
      if (end_.isAt(current_)) current_ = nullptr;
      if (!current_) sequence_ = nullptr;
      settle();
    }

    // Makes the entry that the iterator returns its current one.
    void settle() const {
      hasAdvanced_ = false;
      if (current_) entry_ = *current_;
    }

    // The end may have been passed, not only reached: a run may have become shorter.
    void leaveFinishedRuns() {
      while (run_ && current_ >= run_->end) {
        run_ = run_->next;
        current_ = run_ ? run_->begin : nullptr;
      }
    }

    mutable const Entry* current_ = nullptr;
    mutable const EntryRun<Entry>* run_ = nullptr;
    mutable const EntrySequence<Entry>* sequence_ = nullptr;  // null: changes are not followed
    mutable std::uint32_t seenChanges_ = 0;
    mutable bool hasAdvanced_ = false;  // the current entry was removed
    mutable Entry entry_{};             // the current entry
    mutable RangeEnd<Entry> end_;
  };
  /// Collections are read-only.
  using const_iterator = iterator;

  /// An empty collection.
  TarnCollection() = default;
  /// The items from `begin` up to `end`.
  TarnCollection(iterator begin, iterator end) : begin_(begin), end_(end) {}
  /// All entries of `run` and of the runs after it.
  explicit TarnCollection(const EntryRun<Entry>& run) : begin_(run.begin, &run) {}
  /// The entries from `first`, which has a sequence, up to `end`.
  explicit TarnCollection(const EntryPosition<Entry>& first, const RangeEnd<Entry>& end = {})
      : begin_(first, end) {}

  /// Returns an iterator at the first item.
  iterator begin() const { return begin_; }
  /// Returns the end of the items.
  iterator end() const { return end_; }
  /// Returns true if there are no items.
  bool empty() const { return begin_ == end_; }

 private:
  iterator begin_;
  iterator end_;
};

/// Scalar parameters by name: `first` is the name, `second` the element.
using ScalarCollection = TarnCollection<ParameterEntry<Scalar>>;
/// List parameters by name: `first` is the name, `second` the element.
using ListCollection = TarnCollection<ParameterEntry<List>>;
/// Managed objects by distinguished name or by class.
using ManagedObjectCollection = TarnCollection<ManagedObjectEntry>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
