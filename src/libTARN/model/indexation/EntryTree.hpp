#pragma once

// A B+-tree of entries in a pool.
//
// Entries stand in leaves, in order, one behind the other, and the leaves are linked, so that a
// walk through all entries is a walk through arrays. Inner nodes hold, for each child but the
// first, the entry that was the child's first when the child was made: everything in the child is
// not less than it, everything in the children before it is less. Copies of entries that have since
// been removed may stand there; their key texts stay readable as long as the pool.
//
// Leaf:   | run: begin, end, next leaf | previous leaf | capacity | entry, entry, ...        |
//         the entries may also lie elsewhere
// Inner:  | count | children [fanout] | first entries of the children [fanout]               |
//
// The only leaf of a small tree grows by doubling. A full leaf is split in halves, or, when the new
// entry comes behind all others, left full and followed by a new one: entries that come in order
// cost one comparison each and fill their leaves. An array of entries in order becomes a tree
// without a comparison: its leaves are pieces of the array. Nothing is balanced on removal; a leaf
// that becomes empty is taken out and used again for the next new one, and so is an inner node
// without children. So an entry that was erased can be added again without memory: what the way to
// its place lost, and nothing else, may have to be put back. Add, find and erase cost O(log n)
// comparisons. A leaf that a larger one replaces is abandoned, since the pool takes nothing back.
//
// Height: a level is added when the root is full, for which its children have been split many
// times, each split after about fanout / 2 new nodes below it. Taking no more than fanout / 4 for
// granted, max_height inner levels stand for 8^17 leaves, all of them still in the pool: 2^51
// leaves of 1 KiB exceed every address space.

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

/// `Order::compare(const Entry&, const Entry&)` is negative, zero or positive. No two entries of
/// the tree compare equal. add() has the strong guarantee: when the pool has no memory,
/// std::bad_alloc is thrown and nothing has changed.
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

  /// The entry equal to `key`, or null.
  const Entry* find(const Entry& key) const {
    if (!root_) return nullptr;
    const Leaf* const leaf = descend(key, nullptr);
    const Entry* const position = lowerBound(leaf, key);
    return position != leaf->end && Order::compare(*position, key) == 0 ? position : nullptr;
  }

  /// The first entry that is not less than `key`.
  EntryPlace<Entry> lowerBound(const Entry& key) const {
    if (!root_) return {};
    const EntryRun<Entry>* run = descend(key, nullptr);
    const Entry* entry = lowerBound(static_cast<const Leaf*>(run), key);
    while (run && entry == run->end) {
      run = run->next;
      entry = run ? run->begin : nullptr;
    }
    return {entry, run, entry && Order::compare(*entry, key) == 0};
  }

  /// The first entry.
  EntryPlace<Entry> first() const {
    if (size_ == 0) return {};
    return {first_->begin, first_, true};
  }

  /// False, with nothing changed, when an equal entry is there.
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

  /// Takes `count` entries that are in order, no two of them equal, where they lie; the tree must
  /// be empty. The array then belongs to the tree.
  void takeSorted(Entry* entries, std::size_t count) {
    for (; count > leaf_capacity; count -= leaf_capacity) {
      appendLeaf(leafOver(entries, leaf_capacity));
      entries += leaf_capacity;
    }
    if (count > 0) appendLeaf(root_ ? leafWith(entries, count) : leafOver(entries, count));
  }

  /// Takes from the pool what the next add() may need.
  void prepareAdd() { prepareSpares(height_ + 1); }

  /// False when no equal entry is there. Needs no memory, and neither does adding it again.
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

  // The leaf where `key` is or would be; the way there goes into `path` when one is given.
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

  // A spare one may be larger than asked for.
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

  // All leaves of a tree that has inner nodes are of one size.
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

  // A leaf, and so many inner nodes.
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

  // Only a leaf that is the whole tree is smaller than the others.
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

  // The nodes that a split needs are taken from the pool before anything is changed.
  void split(Leaf* leaf, std::size_t index, const Entry& entry, const Path& path) {
    prepareSpares(neededFor(path));
    Leaf* const right = newLeaf(leaf_capacity);
    splitLeaf(leaf, right, index, entry);
    hangIn(right, path);
  }

  // How many levels from the leaves on up have no room, on the way to the leaf at the path's end.
  std::size_t fullLevels(const Path& path) const {
    std::size_t levels = 0;
    while (levels < height_ && path[levels].node->count == fanout) ++levels;
    return levels;
  }

  // The inner nodes that it takes to hang one more leaf in behind that one.
  std::size_t neededFor(const Path& path) const {
    const std::size_t full = fullLevels(path);
    return full == height_ ? full + 1 : full;
  }

  // The spare nodes are there.
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

  // Behind all others.
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

  // Adds `child` behind the child at `step` and moves what is too much into the empty `right`.
  // Returns the first entry of `right`.
  static Entry splitInner(const Step& step, Inner* right, void* child, const Entry& first) {
    Inner* const left = step.node;
    const std::size_t index = step.index + 1;
    const std::size_t kept = index == fanout ? fanout : fanout / 2;
    right->count = fanout - kept;
    std::copy(left->children + kept, left->children + fanout, right->children);
    std::copy(left->firsts + kept, left->firsts + fanout, right->firsts);
    left->count = kept;
    // At the border the new child goes to the right, unless it would become the first there.
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

  // Takes out the child at the path's end, and every inner node that has no child left then.
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
