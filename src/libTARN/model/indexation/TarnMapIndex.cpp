#include "model/indexation/TarnMapIndex.hpp"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "EntryTree.hpp"
#include "model/indexation/CharComparePredicate.hpp"

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

// Entries that an array holds; more go into a tree once they change.
constexpr std::size_t LARGEST_ARRAY = 64;
constexpr std::size_t FIRST_CAPACITY = 4;

}  // namespace

// One array, which is all that most elements need, or a tree.
//
//   | run: begin, end | condition | tree | capacity, sorted | entry, entry, ...        |
template <class T>
struct NamedEntries {
  using Entry = ParameterEntry<T>;
  using Order = NameOrder<Entry>;
  using Tree = EntryTree<Entry, Order>;

  static NamedEntries* make(libDomXml::IMemoryPool* pool, std::size_t capacity) {
    const std::size_t size = sizeof(NamedEntries) + capacity * sizeof(Entry);
    auto* const made = new (TarnAllocator<unsigned char>(pool).allocate(size)) NamedEntries;
    made->run = {made->array(), made->array(), nullptr};
    made->capacity = static_cast<std::uint32_t>(capacity);
    return made;
  }

  Entry* array() { return reinterpret_cast<Entry*>(this + 1); }
  std::size_t count() const { return static_cast<std::size_t>(run.end - run.begin); }
  bool isFull() const { return count() == capacity; }

  // Where the entry is or would be; told at once for one that comes behind all others.
  std::size_t indexFor(const Entry& key) {
    const Order before;
    if (count() == 0 || before(run.end[-1], key)) return count();
    return static_cast<std::size_t>(std::lower_bound(run.begin, run.end, key, before) - run.begin);
  }
  bool isAt(std::size_t index, const Entry& key) const {
    return index < count() && Order::compare(run.begin[index], key) == 0;
  }

  void insert(std::size_t index, const Entry& entry) {
    std::copy_backward(array() + index, array() + count(), array() + count() + 1);
    array()[index] = entry;
    ++run.end;
  }

  void erase(std::size_t index) {
    std::copy(array() + index + 1, array() + count(), array() + index);
    --run.end;
  }

  NamedEntries* larger(libDomXml::IMemoryPool* pool) {
    NamedEntries* const made = make(pool, std::min(2 * count(), LARGEST_ARRAY));
    made->run.end = std::copy(run.begin, run.end, made->array());
    return made;
  }

  void sort() {
    if (sorted) return;
    std::sort(array(), array() + count(), Order());
    sorted = true;
  }

  TarnCollection<Entry> collection() const {
    return tree ? tree->collection() : TarnCollection<Entry>(run);
  }

  // The array becomes leaves of the tree.
  void turnIntoTree(libDomXml::IMemoryPool* pool) {
    auto* const made = new (TarnAllocator<Tree>(pool).allocate(1)) Tree(pool);
    made->takeSorted(array(), count());
    tree = made;
  }

  EntryRun<Entry> run;
  const bool* condition = nullptr;  // null: the entries are there without one
  Tree* tree = nullptr;             // instead of the array
  std::uint32_t capacity = 0;
  bool sorted = true;
};

template <class T, class Extractor>
NamedEntries<T>* TarnMapIndex<T, Extractor>::current() const {
  const bool isThere = entries_ && (!entries_->condition || *entries_->condition);
  return isThere ? entries_ : nullptr;
}

template <class T, class Extractor>
NamedEntries<T>* TarnMapIndex<T, Extractor>::ordered() const {
  NamedEntries<T>* const entries = current();
  if (entries) entries->sort();
  return entries;
}

template <class T, class Extractor>
bool TarnMapIndex<T, Extractor>::addOnceTrue(const bool& condition, const Entry* entries,
                                             std::size_t count, bool sorted) {
  if (entries_ || count > std::numeric_limits<std::uint32_t>::max()) return false;
  if (count == 0) return true;
  NamedEntries<T>* const made = NamedEntries<T>::make(pool_, count);
  made->run.end = std::copy(entries, entries + count, made->array());
  made->condition = &condition;
  made->sorted = sorted;
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
  if (entries->tree) return entries->tree->add(entry);
  const std::size_t index = entries->indexFor(entry);
  if (entries->isAt(index, entry)) return false;
  if (!entries->isFull()) {
    entries->insert(index, entry);
  } else if (entries->count() < LARGEST_ARRAY) {
    entries_ = entries->larger(pool_);
    entries_->insert(index, entry);
  } else {
    entries->turnIntoTree(pool_);
    entries->tree->add(entry);
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
  if (entries->tree) return entries->tree->erase({name, nullptr});
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
  return entries->isAt(index, {name, nullptr}) ? entries->run.begin[index].second : nullptr;
}

template <class T, class Extractor>
TarnCollection<ParameterEntry<T>> TarnMapIndex<T, Extractor>::getCollection() const {
  const NamedEntries<T>* const entries = ordered();
  return entries ? entries->collection() : TarnCollection<Entry>();
}

template <class T, class Extractor>
TarnCollection<ParameterEntry<T>> TarnMapIndex<T, Extractor>::getUnordered() const {
  const NamedEntries<T>* const entries = current();
  return entries ? entries->collection() : TarnCollection<Entry>();
}

template <class T, class Extractor>
std::size_t TarnMapIndex<T, Extractor>::size() const {
  const NamedEntries<T>* const entries = current();
  if (!entries) return 0;
  return entries->tree ? entries->tree->size() : entries->count();
}

template class TarnMapIndex<Scalar, ScalarNameExtractor>;
template class TarnMapIndex<List, ListNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
