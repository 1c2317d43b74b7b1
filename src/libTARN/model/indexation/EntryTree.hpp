#pragma once

// A B+-tree of entries in a pool.
//
// Structure. Leaves hold the entries in order, adjacent in memory, and are linked: a walk through
// all entries is a walk through arrays. An inner node holds its children and, for each child but
// the first, a separator: the first entry of that child when it was made. Everything in the child
// is not less than the separator; everything in the children before it is less. A separator may be
// the copy of an entry that has since been removed; key texts stay readable as long as the pool.
//
//   Leaf:   | run: begin, end, next leaf | previous leaf | capacity | entry, entry, ...        |
//           the entries may also lie elsewhere
//   Inner:  | count | children [fanout] | first entries of the children [fanout]               |
//
// Adding. The only leaf of a small tree grows by doubling; the pool takes nothing back, so the
// smaller one is abandoned. A full leaf is split in halves. When the new entry is after all others,
// the full leaf is left as it is and a new one follows: entries that come in order cost one
// comparison each and fill their leaves. A sorted array becomes a tree without a comparison: its
// leaves are pieces of the array.
//
// Removing. Nothing is balanced. A leaf without entries, or an inner node without children, is
// unlinked and kept as a spare for the next new one. So an entry that was erased can be added again
// without memory: adding needs at most the nodes that erasing has freed.
//
// Cost. Add, find and erase take O(log n) comparisons.
//
// Height. A level is added when the root is full. Its children have then been split many times,
// each split after about fanout / 2 new nodes below it. Even with only fanout / 4 of them,
// max_height inner levels stand for 8^17 leaves, all still in the pool: 2^51 leaves of 1 KiB exceed
// every address space.

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <type_traits>

#include "libtarn/model/indexation/TarnAllocator.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// A set of entries in order. `Order::compare(const Entry&, const Entry&)` returns a negative
/// number, zero or a positive number; no two entries of the tree compare equal. When the pool is
/// out of memory, add() throws std::bad_alloc and changes nothing.
template <class Entry, class Order>
class EntryTree {
 public:
  static constexpr std::size_t first_capacity = 4;
  static constexpr std::size_t leaf_capacity = 64;
  static constexpr std::size_t fanout = 32;

  explicit EntryTree(libDomXml::IMemoryPool* pool) : allocator_(pool) {}

  std::size_t size() const { return size_; }

  TarnCollection<Entry> collection() const {
    if (!first_) return {};
    return TarnCollection<Entry>(*first_);
  }

  /// Returns the entry equal to `key`, or null.
  const Entry* find(const Entry& key) const {
    if (!root_) return nullptr;
    const Leaf* const leaf = descend(key, nullptr);
    const Entry* const position = lowerBound(leaf, key);
    return position != leaf->end && Order::compare(*position, key) == 0 ? position : nullptr;
  }

  /// Returns the position of the first entry that is not less than `key`.
  EntryPosition<Entry> lowerBound(const Entry& key) const {
    if (!root_) return {};
    const EntryRun<Entry>* run = descend(key, nullptr);
    const Entry* entry = lowerBound(static_cast<const Leaf*>(run), key);
    while (run && entry == run->end) {
      run = run->next;
      entry = run ? run->begin : nullptr;
    }
    return {entry, run, entry && Order::compare(*entry, key) == 0};
  }

  /// Returns the position of the first entry.
  EntryPosition<Entry> first() const {
    if (size_ == 0) return {};
    return {first_->begin, first_, true};
  }

  /// Adds an entry. Returns false, with nothing changed, when there is an equal one.
  bool add(const Entry& entry) {
    if (!root_) return addFirst(entry);
    Path path;
    Leaf* leaf = nullptr;
    Entry* position = nullptr;
    if (isBehindAll(entry)) {
      leaf = last_;
      position = last_->entries() + count(last_);
      if (isFull(leaf) && height_ > 0) descend(entry, &path);
    } else {
      leaf = descend(entry, &path);
      position = leaf->entries() + (lowerBound(leaf, entry) - leaf->begin);
      if (position != leaf->end && Order::compare(*position, entry) == 0) return false;
    }
    insert(leaf, static_cast<std::size_t>(position - leaf->begin), entry, path);
    ++size_;
    return true;
  }

  /// Takes over `count` sorted, distinct entries where they lie. The tree must be empty. The array
  /// then belongs to it.
  void takeSorted(Entry* entries, std::size_t count) {
    for (; count > leaf_capacity; count -= leaf_capacity) {
      appendLeaf(leafOver(entries, leaf_capacity));
      entries += leaf_capacity;
    }
    if (count > 0) appendLeaf(root_ ? leafWith(entries, count) : leafOver(entries, count));
  }

  /// Allocates what the next add() may need.
  void prepareAdd() { prepareSpares(height_ + 1); }

  /// Removes the entry equal to `key`. Returns false when there is none. Needs no memory, and
  /// neither does adding the same entry again.
  bool erase(const Entry& key) {
    if (!root_) return false;
    Path path;
    Leaf* const leaf = descend(key, &path);
    Entry* const position = leaf->entries() + (lowerBound(leaf, key) - leaf->begin);
    if (position == leaf->end || Order::compare(*position, key) != 0) return false;
    std::copy(position + 1, leaf->entries() + count(leaf), position);
    --leaf->end;
    --size_;
    if (leaf->begin == leaf->end && height_ > 0) removeLeaf(leaf, path);
    return true;
  }

  void clear() {
    root_ = nullptr;
    first_ = nullptr;
    last_ = nullptr;
    height_ = 0;
    size_ = 0;
  }

 private:
  static_assert(std::is_trivially_destructible_v<Entry>,
                "entries are dropped without being destroyed");

  struct Leaf : EntryRun<Entry> {
    Leaf* previous;
    std::size_t capacity;

    Entry* entries() { return const_cast<Entry*>(this->begin); }
  };
  static_assert(alignof(Entry) <= alignof(void*) && sizeof(Leaf) % alignof(Entry) == 0,
                "entries follow their leaf in memory that is aligned for pointers");

  struct Inner {
    std::size_t count = 0;
    void* children[fanout];
    Entry firsts[fanout];  // the first is not used
  };

  static constexpr std::size_t max_height = 17;

  struct Step {
    Inner* node;
    std::size_t index;  // of the child that was taken
  };
  using Path = std::array<Step, max_height>;  // Path[0] is above the leaves

  static std::size_t count(const Leaf* leaf) {
    return static_cast<std::size_t>(leaf->end - leaf->begin);
  }
  static bool isFull(const Leaf* leaf) { return count(leaf) == leaf->capacity; }

  bool isBehindAll(const Entry& entry) const {
    return last_->begin != last_->end && Order::compare(last_->end[-1], entry) < 0;
  }

  static const Entry* lowerBound(const Leaf* leaf, const Entry& key) {
    return std::lower_bound(leaf->begin, leaf->end, key, [](const Entry& a, const Entry& b) {
      return Order::compare(a, b) < 0;
    });
  }

  // Returns the leaf where `key` is or would be. Writes the steps down to it into `path`, unless
  // null.
  Leaf* descend(const Entry& key, Path* path) const {
    void* node = root_;
    for (std::size_t level = height_; level > 0; --level) {
      auto* const inner = static_cast<Inner*>(node);
      const Entry* const behind =
          std::upper_bound(inner->firsts + 1, inner->firsts + inner->count, key,
                           [](const Entry& a, const Entry& b) { return Order::compare(a, b) < 0; });
      const auto index = static_cast<std::size_t>(behind - inner->firsts) - 1;
      if (path) (*path)[level - 1] = {inner, index};
      node = inner->children[index];
    }
    return static_cast<Leaf*>(node);
  }

  // Nodes

  // Returns a leaf of at least `capacity`: a spare one may be larger.
  Leaf* newLeaf(std::size_t capacity) {
    if (!spareLeaves_) return leafFromPool(capacity);
    Leaf* const leaf = spareLeaves_;
    spareLeaves_ = nextOf(leaf);
    leaf->next = nullptr;
    leaf->previous = nullptr;
    return leaf;
  }

  Leaf* leafFromPool(std::size_t capacity) {
    void* const memory = allocator_.allocate(sizeof(Leaf) + capacity * sizeof(Entry));
    auto* const leaf = new (memory) Leaf;
    return initialized(leaf, reinterpret_cast<Entry*>(leaf + 1), 0, capacity);
  }

  Leaf* leafOver(Entry* entries, std::size_t count) {
    auto* const leaf = new (allocator_.allocate(sizeof(Leaf))) Leaf;
    return initialized(leaf, entries, count, count);
  }

  static Leaf* initialized(Leaf* leaf, Entry* entries, std::size_t count, std::size_t capacity) {
    leaf->begin = entries;
    leaf->end = entries + count;
    leaf->next = nullptr;
    leaf->previous = nullptr;
    leaf->capacity = capacity;
    return leaf;
  }

  // All leaves of a tree with inner nodes have the same capacity.
  void addSpare(Leaf* leaf) {
    leaf->next = spareLeaves_;
    spareLeaves_ = leaf;
  }

  Inner* newInner() {
    if (!spareInners_) return innerFromPool();
    Inner* const inner = spareInners_;
    spareInners_ = nextSpare(inner);
    inner->count = 0;
    return inner;
  }

  Inner* innerFromPool() { return new (allocator_.allocate(sizeof(Inner))) Inner; }

  // Ensures that there are a spare leaf and `inners` spare inner nodes.
  void prepareSpares(std::size_t inners) {
    if (!spareLeaves_) addSpare(leafFromPool(leaf_capacity));
    for (const Inner* inner = spareInners_; inner && inners > 0; inner = nextSpare(inner)) --inners;
    for (; inners > 0; --inners) addSpare(innerFromPool());
  }

  static Inner* nextSpare(const Inner* inner) { return static_cast<Inner*>(inner->children[0]); }

  void addSpare(Inner* inner) {
    inner->children[0] = spareInners_;
    spareInners_ = inner;
  }

  // Full capacity: only a leaf that is the whole tree is smaller.
  Leaf* leafWith(const Entry* entries, std::size_t count) {
    Leaf* const leaf = newLeaf(leaf_capacity);
    leaf->end = std::copy(entries, entries + count, leaf->entries());
    return leaf;
  }

  static void insertInto(Leaf* leaf, std::size_t index, const Entry& entry) {
    Entry* const entries = leaf->entries();
    const std::size_t size = count(leaf);
    std::copy_backward(entries + index, entries + size, entries + size + 1);
    entries[index] = entry;
    ++leaf->end;
  }

  static void insertInto(Inner* inner, std::size_t index, void* child, const Entry& first) {
    std::copy_backward(inner->children + index, inner->children + inner->count,
                       inner->children + inner->count + 1);
    std::copy_backward(inner->firsts + index, inner->firsts + inner->count,
                       inner->firsts + inner->count + 1);
    inner->children[index] = child;
    inner->firsts[index] = first;
    ++inner->count;
  }

  // Adding

  bool addFirst(const Entry& entry) {
    Leaf* const leaf = newLeaf(first_capacity);
    insertInto(leaf, 0, entry);
    root_ = first_ = last_ = leaf;
    ++size_;
    return true;
  }

  void insert(Leaf* leaf, std::size_t index, const Entry& entry, const Path& path) {
    if (!isFull(leaf)) return insertInto(leaf, index, entry);
    if (leaf->capacity < leaf_capacity) return insertInto(growOnlyLeaf(leaf), index, entry);
    split(leaf, index, entry, path);
  }

  Leaf* growOnlyLeaf(Leaf* leaf) {
    Leaf* const larger = newLeaf(std::min(2 * leaf->capacity, leaf_capacity));
    std::copy(leaf->begin, leaf->end, larger->entries());
    larger->end += count(leaf);
    leaf->end = leaf->begin;
    root_ = first_ = last_ = larger;
    return larger;
  }

  // Allocates the nodes that the split needs before it changes anything.
  void split(Leaf* leaf, std::size_t index, const Entry& entry, const Path& path) {
    prepareSpares(neededFor(path));
    Leaf* const right = newLeaf(leaf_capacity);
    splitLeaf(leaf, right, index, entry);
    hangIn(right, path);
  }

  // Returns the number of full levels, counted from the leaves up, on the path.
  std::size_t fullLevels(const Path& path) const {
    std::size_t levels = 0;
    while (levels < height_ && path[levels].node->count == fanout) ++levels;
    return levels;
  }

  // Returns the number of inner nodes that inserting a leaf after the one at the path's end needs.
  std::size_t neededFor(const Path& path) const {
    const std::size_t full = fullLevels(path);
    return full == height_ ? full + 1 : full;
  }

  // Inserts `right` into the inner nodes, after the leaf at the path's end. The spare nodes exist.
  void hangIn(Leaf* right, const Path& path) {
    const std::size_t full = fullLevels(path);
    void* child = right;
    Entry first = *right->begin;
    for (std::size_t level = 0; level < full; ++level) {
      Inner* const inner = newInner();
      first = splitInner(path[level], inner, child, first);
      child = inner;
    }
    if (full < height_) {
      const Step& step = path[full];
      insertInto(step.node, step.index + 1, child, first);
      return;
    }
    Inner* const root = newInner();
    insertInto(root, 0, root_, first);
    insertInto(root, 1, child, first);
    root_ = root;
    ++height_;
  }

  // Appends a leaf after all others.
  void appendLeaf(Leaf* leaf) {
    if (root_) {
      const Path path = pathToLast();
      prepareSpares(neededFor(path));
      linkBehind(last_, leaf);
      hangIn(leaf, path);
    } else {
      root_ = first_ = last_ = leaf;
    }
    size_ += count(leaf);
  }

  Path pathToLast() const {
    Path path;
    void* node = root_;
    for (std::size_t level = height_; level > 0; --level) {
      auto* const inner = static_cast<Inner*>(node);
      path[level - 1] = {inner, inner->count - 1};
      node = inner->children[inner->count - 1];
    }
    return path;
  }

  void splitLeaf(Leaf* leaf, Leaf* right, std::size_t index, const Entry& entry) {
    const bool isLastEntry = leaf == last_ && index == count(leaf);
    const std::size_t kept = isLastEntry ? index : leaf_capacity / 2;
    std::copy(leaf->begin + kept, leaf->end, right->entries());
    right->end += count(leaf) - kept;
    leaf->end = leaf->begin + kept;
    linkBehind(leaf, right);
    if (index < kept) {
      insertInto(leaf, index, entry);
    } else {
      insertInto(right, index - kept, entry);
    }
  }

  void linkBehind(Leaf* leaf, Leaf* right) {
    right->previous = leaf;
    right->next = leaf->next;
    if (leaf == last_) {
      last_ = right;
    } else {
      nextOf(right)->previous = right;
    }
    leaf->next = right;
  }

  static Leaf* nextOf(const Leaf* leaf) {
    return const_cast<Leaf*>(static_cast<const Leaf*>(leaf->next));
  }

  // Adds `child` after the child at `step` and moves the excess into the empty `right`. Returns the
  // first entry of `right`.
  static Entry splitInner(const Step& step, Inner* right, void* child, const Entry& first) {
    Inner* const left = step.node;
    const std::size_t index = step.index + 1;
    const std::size_t kept = index == fanout ? fanout : fanout / 2;
    right->count = fanout - kept;
    std::copy(left->children + kept, left->children + fanout, right->children);
    std::copy(left->firsts + kept, left->firsts + fanout, right->firsts);
    left->count = kept;
    // A child at the boundary goes to the right, unless it would be the first one there.
    if (index > kept || kept == fanout) {
      insertInto(right, index - kept, child, first);
    } else {
      insertInto(left, index, child, first);
    }
    return right->firsts[0];
  }

  // Removing

  void removeLeaf(Leaf* leaf, const Path& path) {
    if (leaf->previous) {
      leaf->previous->next = leaf->next;
    } else {
      first_ = nextOf(leaf);
    }
    if (leaf->next) {
      nextOf(leaf)->previous = leaf->previous;
    } else {
      last_ = leaf->previous;
    }
    addSpare(leaf);
    removeChild(path);
    shrink();
  }

  // Removes the child at the path's end, and every inner node that then has no child.
  void removeChild(const Path& path) {
    for (std::size_t level = 0; level < height_; ++level) {
      Inner* const inner = path[level].node;
      const std::size_t index = path[level].index;
      std::copy(inner->children + index + 1, inner->children + inner->count,
                inner->children + index);
      std::copy(inner->firsts + index + 1, inner->firsts + inner->count, inner->firsts + index);
      if (--inner->count > 0) return;
      if (level + 1 < height_) addSpare(inner);
    }
  }

  void shrink() {
    while (height_ > 0) {
      Inner* const root = static_cast<Inner*>(root_);
      if (root->count > 1) return;
      root_ = root->count == 0 ? nullptr : root->children[0];
      addSpare(root);
      if (!root_) return clear();
      --height_;
    }
  }

  TarnAllocator<unsigned char> allocator_;
  void* root_ = nullptr;  // a Leaf at height 0, else an Inner
  Leaf* first_ = nullptr;
  Leaf* last_ = nullptr;
  Leaf* spareLeaves_ = nullptr;
  Inner* spareInners_ = nullptr;
  std::size_t height_ = 0;
  std::size_t size_ = 0;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
