#include "libtarn/model/indexation/TarnMapIndex.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "EntryTree.hpp"
#include "libtarn/model/indexation/CharComparePredicate.hpp"

namespace libtarn {
namespace model {
namespace indexation {

namespace {

template <class Entry>
struct NameOrder {
  static int compare(const Entry& a, const Entry& b) {
    return CharComparePredicate::compare(a.first, b.first);
  }
  bool operator()(const Entry& a, const Entry& b) const { return compare(a, b) < 0; }
};

// Most entries that an array holds; an index with more becomes a tree when it changes.
constexpr std::size_t LARGEST_ARRAY = 64;
constexpr std::size_t FIRST_CAPACITY = 4;

}  // namespace

// A base class, so that it fills the padding after the change count.
struct ArraySize {
  std::uint32_t capacity : 31;
  std::uint32_t sorted : 1;
};

// The entries of one index: an array, which is enough for most elements, or a tree. An array that
// became too small stays for the iterators that are in it: its run is empty, and the next run is
// the larger array.
//
//   | changes | capacity, sorted | run: begin, end, next | tree | entry, entry, ... |
template <class T>
struct NamedEntries : EntrySequence<ParameterEntry<T>>, ArraySize, EntryRun<ParameterEntry<T>> {
  using Entry = ParameterEntry<T>;
  using Order = NameOrder<Entry>;
  using Tree = EntryTree<Entry, Order>;

  static constexpr std::size_t MOST_ENTRIES = std::numeric_limits<std::int32_t>::max();

  static NamedEntries* make(libDomXml::IMemoryPool* pool, std::size_t capacity) {
    const std::size_t size = sizeof(NamedEntries) + capacity * sizeof(Entry);
    auto* const made = new (TarnAllocator<unsigned char>(pool).allocate(size)) NamedEntries;
    made->begin = made->array();
    made->end = made->array();
    made->next = nullptr;
    made->capacity = static_cast<std::uint32_t>(capacity) & MOST_ENTRIES;
    made->sorted = 1;
    return made;
  }

  Entry* array() { return reinterpret_cast<Entry*>(this + 1); }
  std::size_t count() const { return static_cast<std::size_t>(this->end - this->begin); }
  bool isFull() const { return count() == capacity; }

  // Returns the index where the entry is or would be; at once for an entry after all others.
  std::size_t indexFor(const Entry& key) {
    const Order before;
    if (count() == 0 || before(this->end[-1], key)) return count();
    const Entry* const position = std::lower_bound(this->begin, this->end, key, before);
    return static_cast<std::size_t>(position - this->begin);
  }
  bool isAt(std::size_t index, const Entry& key) const {
    return index < count() && Order::compare(this->begin[index], key) == 0;
  }

  void insert(std::size_t index, const Entry& entry) {
    std::copy_backward(array() + index, array() + count(), array() + count() + 1);
    array()[index] = entry;
    ++this->end;
    ++this->changes;
  }

  void erase(std::size_t index) {
    std::copy(array() + index + 1, array() + count(), array() + index);
    --this->end;
    ++this->changes;
  }

  NamedEntries* larger(libDomXml::IMemoryPool* pool) {
    NamedEntries* const made = make(pool, std::min(2 * count(), LARGEST_ARRAY));
    made->end = std::copy(this->begin, this->end, made->array());
    this->begin = this->end;
    this->next = made;
    ++this->changes;
    return made;
  }

  // Returns the array that replaced this one, or this one.
  const NamedEntries& latest() const {
    const NamedEntries* entries = this;
    while (entries->next) entries = static_cast<const NamedEntries*>(entries->next);
    return *entries;
  }

  void sort() {
    if (sorted) return;
    std::sort(array(), array() + count(), Order());
    sorted = 1;
  }

  TarnCollection<Entry> collection() const {
    if (tree) return TarnCollection<Entry>(followed(tree->first()));
    if (count() == 0) return {};
    return TarnCollection<Entry>(followed({this->begin, this}));
  }

  // Iterators are valid until the index changes.
  TarnCollection<Entry> unordered() const {
    return tree ? tree->collection() : TarnCollection<Entry>(*this);
  }

  EntryPosition<Entry> lowerBound(const Entry& key) {
    if (tree) return followed(tree->lowerBound(key));
    sort();
    const std::size_t index = indexFor(key);
    if (index == count()) return followed({});
    return followed({this->begin + index, this, isAt(index, key)});
  }

  EntryPosition<Entry> followed(EntryPosition<Entry> position) const {
    position.sequence = this;
    return position;
  }

  // The pieces of the array become leaves of the tree.
  void turnIntoTree(libDomXml::IMemoryPool* pool) {
    auto* const made = new (TarnAllocator<Tree>(pool).allocate(1)) Tree(pool);
    made->takeSorted(array(), count());
    tree = made;
    ++this->changes;
  }

  bool addToTree(const Entry& entry) {
    const bool added = tree->add(entry);
    if (added) ++this->changes;
    return added;
  }

  bool eraseFromTree(const Entry& key) {
    const bool erased = tree->erase(key);
    if (erased) ++this->changes;
    return erased;
  }

  Tree* tree = nullptr;  // replaces the array, unless null
};

namespace {

template <class T>
EntryPosition<ParameterEntry<T>> lowerBoundIn(const EntrySequence<ParameterEntry<T>>& sequence,
                                              const ParameterEntry<T>& entry) {
  const auto& entries = static_cast<const NamedEntries<T>&>(sequence).latest();
  return const_cast<NamedEntries<T>&>(entries).lowerBound(entry);
}

}  // namespace

template <>
EntryPosition<ParameterEntry<Scalar>> lowerBound(
    const EntrySequence<ParameterEntry<Scalar>>& sequence, const ParameterEntry<Scalar>& entry) {
  return lowerBoundIn(sequence, entry);
}

template <>
EntryPosition<ParameterEntry<List>> lowerBound(const EntrySequence<ParameterEntry<List>>& sequence,
                                               const ParameterEntry<List>& entry) {
  return lowerBoundIn(sequence, entry);
}

template <class T, class Extractor>
NamedEntries<T>* TarnMapIndex<T, Extractor>::ordered() const {
  if (entries_) entries_->sort();
  return entries_;
}

template <class T, class Extractor>
bool TarnMapIndex<T, Extractor>::fill(const Entry* entries, std::size_t count, bool sorted) {
  if (entries_ || count > NamedEntries<T>::MOST_ENTRIES) return false;
  NamedEntries<T>* const made = NamedEntries<T>::make(pool_, count);
  made->end = std::copy(entries, entries + count, made->array());
  made->sorted = sorted ? 1 : 0;
  entries_ = made;
  return true;
}

template <class T, class Extractor>
bool TarnMapIndex<T, Extractor>::add(T* element) {
  const Entry entry{Extractor()(element), element};
  NamedEntries<T>* const entries = ordered();
  if (!entries) {
    entries_ = NamedEntries<T>::make(pool_, FIRST_CAPACITY);
    entries_->insert(0, entry);
    return true;
  }
  if (entries->tree) return entries->addToTree(entry);
  const std::size_t index = entries->indexFor(entry);
  if (entries->isAt(index, entry)) return false;
  if (!entries->isFull()) {
    entries->insert(index, entry);
  } else if (entries->count() < LARGEST_ARRAY) {
    entries_ = entries->larger(pool_);
    entries_->insert(index, entry);
  } else {
    entries->turnIntoTree(pool_);
    entries->addToTree(entry);
  }
  return true;
}

template <class T, class Extractor>
bool TarnMapIndex<T, Extractor>::remove(T* element) {
  return remove(Extractor()(element));
}

template <class T, class Extractor>
bool TarnMapIndex<T, Extractor>::remove(const char* name) {
  NamedEntries<T>* const entries = ordered();
  if (!entries) return false;
  if (!entries->tree && entries->count() > LARGEST_ARRAY) entries->turnIntoTree(pool_);
  if (entries->tree) return entries->eraseFromTree({name, nullptr});
  const std::size_t index = entries->indexFor({name, nullptr});
  if (!entries->isAt(index, {name, nullptr})) return false;
  entries->erase(index);
  return true;
}

template <class T, class Extractor>
T* TarnMapIndex<T, Extractor>::find(const char* name) const {
  NamedEntries<T>* const entries = ordered();
  if (!entries) return nullptr;
  if (entries->tree) {
    const Entry* const entry = entries->tree->find({name, nullptr});
    return entry ? entry->second : nullptr;
  }
  const std::size_t index = entries->indexFor({name, nullptr});
  return entries->isAt(index, {name, nullptr}) ? entries->begin[index].second : nullptr;
}

template <class T, class Extractor>
TarnCollection<ParameterEntry<T>> TarnMapIndex<T, Extractor>::getCollection() const {
  const NamedEntries<T>* const entries = ordered();
  return entries ? entries->collection() : TarnCollection<Entry>();
}

template <class T, class Extractor>
TarnCollection<ParameterEntry<T>> TarnMapIndex<T, Extractor>::getUnordered() const {
  return entries_ ? entries_->unordered() : TarnCollection<Entry>();
}

template <class T, class Extractor>
std::size_t TarnMapIndex<T, Extractor>::size() const {
  if (!entries_) return 0;
  return entries_->tree ? entries_->tree->size() : entries_->count();
}

template class TarnMapIndex<Scalar, ScalarNameExtractor>;
template class TarnMapIndex<List, ListNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
