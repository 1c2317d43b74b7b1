#pragma once

#include "EntryTree.hpp"
#include "libtarn/model/indexation/CharComparePredicate.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// Order of entries by key; keys are unique.
struct UniqueKeyOrder {
  static int compare(const ManagedObjectEntry& a, const ManagedObjectEntry& b) {
    return CharComparePredicate::compare(a.key, b.key);
  }
};

/// Order of entries by key; equal keys in the order of insertion.
struct SharedKeyOrder {
  static int compare(const ManagedObjectEntry& a, const ManagedObjectEntry& b) {
    const int order = CharComparePredicate::compare(a.key, b.key);
    if (order != 0 || a.serial == b.serial) return order;
    return a.serial < b.serial ? -1 : 1;
  }
};

/// Managed objects in one order. Its iterators find their entry again after a change.
class FollowedView : public EntrySequence<ManagedObjectEntry> {
 public:
  /// Returns the position of the first entry that is not before `key`.
  virtual EntryPosition<ManagedObjectEntry> lowerBound(const ManagedObjectEntry& key) const = 0;

 protected:
  ~FollowedView() = default;
};

/// An EntryTree that counts its changes. When the pool is out of memory, an operation throws
/// std::bad_alloc and changes nothing.
template <class Order>
class ObjectView final : public FollowedView {
 public:
  using Entry = ManagedObjectEntry;

  explicit ObjectView(libDomXml::IMemoryPool* pool) : tree_(pool) {}

  void takeSorted(Entry* entries, std::size_t count) { tree_.takeSorted(entries, count); }

  void prepareAdd() { tree_.prepareAdd(); }

  bool add(const Entry& entry) {
    const bool added = tree_.add(entry);
    if (added) ++changes;
    return added;
  }

  bool erase(const Entry& key) {
    const bool erased = tree_.erase(key);
    if (erased) ++changes;
    return erased;
  }

  void clear() {
    tree_.clear();
    ++changes;
  }

  const Entry* find(const Entry& key) const { return tree_.find(key); }

  EntryPosition<Entry> lowerBound(const Entry& key) const override {
    return followed(tree_.lowerBound(key));
  }

  ManagedObjectCollection collection() const {
    return ManagedObjectCollection(followed(tree_.first()));
  }

  /// Returns the entries; iterators are valid until the view changes.
  ManagedObjectCollection unfollowed() const { return tree_.collection(); }

 private:
  EntryPosition<Entry> followed(EntryPosition<Entry> position) const {
    position.sequence = this;
    return position;
  }

  EntryTree<Entry, Order> tree_;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
