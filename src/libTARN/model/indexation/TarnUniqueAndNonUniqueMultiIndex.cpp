#include "model/indexation/TarnUniqueAndNonUniqueMultiIndex.hpp"

#include <limits>

#include "EntryTree.hpp"
#include "model/indexation/CharComparePredicate.hpp"

namespace libtarn {
namespace model {
namespace indexation {

struct UniqueKeyOrder {
  static int compare(const ManagedObjectEntry& a, const ManagedObjectEntry& b) {
    return CharComparePredicate::compare(a.key, b.key);
  }
};

// Equal keys in the order of insertion.
struct SharedKeyOrder {
  static int compare(const ManagedObjectEntry& a, const ManagedObjectEntry& b) {
    const int order = CharComparePredicate::compare(a.key, b.key);
    if (order != 0 || a.serial == b.serial) return order;
    return a.serial < b.serial ? -1 : 1;
  }
};

template <class T, class UniqueExtractor, class NonUniqueExtractor>
bool TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::add(T* element) {
  if (!uniqueView_) {
    uniqueView_ = new (TarnAllocator<UniqueView>(pool_).allocate(1)) UniqueView(pool_);
  }
  const ManagedObjectEntry entry{UniqueExtractor()(element), element, nextSerial_};
  if (!uniqueView_->add(entry)) return false;
  if (sharedView_) {
    try {
      sharedView_->add({NonUniqueExtractor()(element), element, nextSerial_});
    } catch (...) {
      uniqueView_->erase(entry);
      throw;
    }
  }
  ++nextSerial_;
  return true;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
bool TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::remove(T* element) {
  if (!uniqueView_) return false;
  const ManagedObjectEntry key{UniqueExtractor()(element), nullptr, 0};
  const ManagedObjectEntry* const found = uniqueView_->find(key);
  if (!found) return false;
  if (sharedView_) eraseFromSharedView(*found);
  uniqueView_->erase(key);
  return true;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
T* TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::findUniqueElement(
    const char* key) const {
  const ManagedObjectEntry* const entry =
      uniqueView_ ? uniqueView_->find({key, nullptr, 0}) : nullptr;
  return entry ? entry->object : nullptr;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
ManagedObjectCollection
TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::getNonUniqueCollection(
    const char* key) const {
  if (!uniqueView_) return {};
  if (!sharedView_) buildSharedView();
  // No serial reaches the largest number.
  const auto first = sharedView_->lowerBound({key, nullptr, 0});
  const auto last =
      sharedView_->lowerBound({key, nullptr, std::numeric_limits<std::size_t>::max()});
  return {first, last};
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
ManagedObjectCollection
TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::getCollection() const {
  return uniqueView_ ? uniqueView_->collection() : ManagedObjectCollection();
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
std::size_t TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::size() const {
  return uniqueView_ ? uniqueView_->size() : 0;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
void TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::clear() {
  if (uniqueView_) uniqueView_->clear();
  if (sharedView_) sharedView_->clear();
}

// The walks below need the entries, whereas a range-for gives the objects.

template <class T, class UniqueExtractor, class NonUniqueExtractor>
void TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::buildSharedView()
    const {
  auto* const view = new (TarnAllocator<SharedView>(pool_).allocate(1)) SharedView(pool_);
  const ManagedObjectCollection collection = uniqueView_->collection();
  auto entry = collection.begin();
  while (entry != collection.end()) {
    view->add({NonUniqueExtractor()(entry->object), entry->object, entry->serial});
    ++entry;
  }
  sharedView_ = view;
}

template <class T, class UniqueExtractor, class NonUniqueExtractor>
void TarnUniqueAndNonUniqueMultiIndex<T, UniqueExtractor, NonUniqueExtractor>::eraseFromSharedView(
    const ManagedObjectEntry& entry) {
  if (sharedView_->erase({NonUniqueExtractor()(entry.object), nullptr, entry.serial})) return;
  // The class was changed behind the index: it stands under its earlier key.
  const ManagedObjectCollection collection = sharedView_->collection();
  auto stale = collection.begin();
  while (stale != collection.end() && stale->serial != entry.serial) ++stale;
  if (stale != collection.end()) sharedView_->erase(ManagedObjectEntry(*stale.operator->()));
}

template class TarnUniqueAndNonUniqueMultiIndex<
    LibTarnManagedObject, ManagedObjectDistNameExtractor, ManagedObjectClassNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
