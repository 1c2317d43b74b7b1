#include "libtarn/model/indexation/TarnUniqueAndNonUniqueMultiIndex.hpp"

#include <new>

#include "../../text/patternText.hpp"
#include "ObjectTable.hpp"
#include "ObjectView.hpp"
#include "libtarn/model/indexation/CharComparePredicate.hpp"
#include "sortByKey.hpp"

namespace libtarn {
namespace model {
namespace indexation {

template <>
EntryPosition<ManagedObjectEntry> lowerBound(const EntrySequence<ManagedObjectEntry>& sequence,
                                             const ManagedObjectEntry& entry) {
  return static_cast<const FollowedView&>(sequence).lowerBound(entry);
}

namespace {

// Returns a view of the `count` entries that `forEach` passes on, sorted.
template <class View, class Order, class ForEach>
View* makeView(libDomXml::IMemoryPool* pool, std::size_t count, ForEach forEach) {
  auto* const view = new (TarnAllocator<View>(pool).allocate(1)) View(pool);
  if (count == 0) return view;
  auto* const keyed = TarnAllocator<KeyedEntry<ManagedObjectEntry>>(pool).allocate(count);
  KeyedEntry<ManagedObjectEntry>* end = keyed;
  forEach([&end](const ManagedObjectEntry& entry) { *end++ = {0, entry}; });
  KeySorter<ManagedObjectEntry, Order>::sort(keyed, end);
  // Moves the entries together, to the start of the same memory.
  auto* const entries = reinterpret_cast<ManagedObjectEntry*>(keyed);
  for (std::size_t i = 0; i < count; ++i) {
    const ManagedObjectEntry entry = keyed[i].entry;
    new (entries + i) ManagedObjectEntry(entry);
  }
  view->takeSorted(entries, count);
  return view;
}

}  // namespace

template <class T, class UniqueExtractor, class NonUniqueExtractor>
bool TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::add(T* element) {
  const ManagedObjectEntry entry{UniqueExtractor()(element), element, nextSerial_};
  if (!addUnique(entry)) return false;
  if (sharedView_) {
    try {
      sharedView_->add({NonUniqueExtractor()(element), element, nextSerial_});
    } catch (...) {
      eraseUnique(entry.key);
      throw;
    }
  }
  ++nextSerial_;
  ++size_;
  return true;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
bool TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::fill(
    const HashedObject* objects, std::size_t count) {
  if (size_ > 0) return false;
  auto* const table = new (TarnAllocator<ObjectTable>(pool_).allocate(1)) ObjectTable(pool_);
  if (!table->addAll(objects, count, nextSerial_)) return false;
  clear();
  table_ = table;
  size_ = count;
  nextSerial_ += count;
  return true;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
bool TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::addUnique(
    const ManagedObjectEntry& entry) {
  if (!table_ && !uniqueView_) makeTable();
  if (!table_) return uniqueView_->add(entry);
  const ObjectTable::Added added = table_->add(entry);
  if (added == ObjectTable::Added::CROWDED) {
    UniqueView& view = uniqueView();
    table_ = nullptr;
    return view.add(entry);
  }
  if (added == ObjectTable::Added::DUPLICATE) return false;
  if (!uniqueView_) return true;
  try {
    return uniqueView_->add(entry);
  } catch (...) {
    table_->erase(entry.key);
    throw;
  }
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
void TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::makeTable() {
  table_ = new (TarnAllocator<ObjectTable>(pool_).allocate(1)) ObjectTable(pool_);
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
void TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::prepareAdd(
    const char* key) {
  if (!table_ && !uniqueView_) makeTable();
  if (table_) table_->prepareAdd();
  if (table_ && table_->isCrowdedFor(textOrEmpty(key))) {
    uniqueView();
    table_ = nullptr;
  }
  if (uniqueView_) uniqueView_->prepareAdd();
  if (sharedView_) sharedView_->prepareAdd();
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
void TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::eraseUnique(
    const char* key) {
  if (table_) table_->erase(key);
  if (uniqueView_) uniqueView_->erase({key, nullptr, 0});
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
bool TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::remove(T* element) {
  const char* const key = UniqueExtractor()(element);
  const ManagedObjectEntry* const found = findEntry(key);
  if (!found) return false;
  if (sharedView_) eraseFromSharedView(*found);
  eraseUnique(key);
  --size_;
  return true;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
const ManagedObjectEntry*
TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::findEntry(
    const char* key) const {
  if (table_) return table_->find(key);
  return uniqueView_ ? uniqueView_->find({key, nullptr, 0}) : nullptr;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
T* TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::findUniqueElement(
    const char* key) const {
  const ManagedObjectEntry* const entry = findEntry(textOrEmpty(key));
  return entry ? entry->object : nullptr;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
ManagedObjectCollection
TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::getNonUniqueCollection(
    const char* key) const {
  if (size_ == 0) return {};
  const EntryPosition<ManagedObjectEntry> first = sharedView().lowerBound({key, nullptr, 0});
  if (!first.entry) return {};
  // `end` has the key of an entry, which lives as long as the index. Objects that enter the class
  // from now on are after the end, so that a loop which renames objects of the class ends.
  RangeEnd<ManagedObjectEntry> end;
  end.bound = {first.entry->key, nullptr, nextSerial_};
  return CharComparePredicate::compare(first.entry->key, key) == 0
             ? ManagedObjectCollection(first, end)
             : ManagedObjectCollection();
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
ManagedObjectCollection
TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::getCollection() const {
  return size_ == 0 ? ManagedObjectCollection() : uniqueView().collection();
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
std::size_t TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::size() const {
  return size_;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
void TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::clear() {
  // Ends iterators that are in the views.
  if (uniqueView_) uniqueView_->clear();
  if (sharedView_) sharedView_->clear();
  table_ = nullptr;
  uniqueView_ = nullptr;
  sharedView_ = nullptr;
  size_ = 0;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
void TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::forEach(
    const std::function<void(T*)>& visit) const {
  if (table_) {
    table_->forEach([&visit](const ManagedObjectEntry& entry) { visit(entry.object); });
  } else if (uniqueView_) {
    for (T* const element : uniqueView_->unfollowed()) visit(element);
  }
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
typename TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::UniqueView&
TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::uniqueView() const {
  if (!uniqueView_) {
    uniqueView_ = makeView<UniqueView, UniqueKeyOrder>(
        pool_, table_->size(), [this](auto take) { table_->forEach(take); });
  }
  return *uniqueView_;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
typename TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::SharedView&
TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::sharedView() const {
  if (!sharedView_) {
    sharedView_ = makeView<SharedView, SharedKeyOrder>(pool_, size_, [this](auto take) {
      const auto takeByClass = [&take](const ManagedObjectEntry& entry) {
        take({NonUniqueExtractor()(entry.object), entry.object, entry.serial});
      };
      if (table_) return table_->forEach(takeByClass);
      const ManagedObjectCollection collection = uniqueView_->unfollowed();
      // Iterates over entries; a range-for would yield objects.
      for (auto entry = collection.begin(); entry != collection.end(); ++entry) {
        takeByClass(*entry.operator->());
      }
    });
  }
  return *sharedView_;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
void TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::eraseFromSharedView(
    const ManagedObjectEntry& entry) {
  if (sharedView_->erase({NonUniqueExtractor()(entry.object), nullptr, entry.serial})) return;
  // The class was changed without the index: the entry is under the earlier class.
  const ManagedObjectCollection collection = sharedView_->unfollowed();
  auto stale = collection.begin();
  while (stale != collection.end() && stale->serial != entry.serial) ++stale;
  if (stale != collection.end()) sharedView_->erase(ManagedObjectEntry(*stale.operator->()));
}

template class TarnUniqueAndNonUniqueMultiIndex<
    LibTarnManagedObject, ManagedObjectDistNameExtractor, ManagedObjectClassNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
