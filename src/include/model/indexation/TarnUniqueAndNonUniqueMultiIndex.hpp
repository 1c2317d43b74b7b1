#pragma once

#include "IMemoryPool.hpp"
#include "model/indexation/ITarnUniqueAndNonUniqueMultiIndex.hpp"
#include "model/indexation/ManagedObjectClassNameExtractor.hpp"
#include "model/indexation/ManagedObjectDistNameExtractor.hpp"

namespace libtarn {
namespace model {
namespace indexation {

template <class Entry, class Order>
class EntryTree;
struct UniqueKeyOrder;
struct SharedKeyOrder;

/// An ordered index of managed objects with two views, by name and by class, all of it in a pool.
///
/// Look-up, add and remove cost O(log n); adding in the order of the names costs one comparison
/// each. The view by class is built when it is first asked for, in O(n log n), and kept in step
/// from then on. When the pool has no memory add() and the building of that view throw
/// std::bad_alloc and change nothing.
/// Instantiated for LibTarnManagedObject.
template <class T, class UniqueExtractor, class NonUniqueExtractor>
class TarnUniqueAndNonUniqueMultiIndex : public ITarnUniqueAndNonUniqueMultiIndex<T> {
 public:
  explicit TarnUniqueAndNonUniqueMultiIndex(libDomXml::IMemoryPool& pool) : pool_(&pool) {}

  bool add(T* element) override;
  bool remove(T* element) override;
  T* findUniqueElement(const char* key) const override;
  ManagedObjectCollection getNonUniqueCollection(const char* key) const override;
  ManagedObjectCollection getCollection() const override;
  std::size_t size() const override;
  void clear() override;

 private:
  using UniqueView = EntryTree<ManagedObjectEntry, UniqueKeyOrder>;
  using SharedView = EntryTree<ManagedObjectEntry, SharedKeyOrder>;

  void buildSharedView() const;
  void eraseFromSharedView(const ManagedObjectEntry& entry);

  libDomXml::IMemoryPool* pool_;
  UniqueView* uniqueView_ = nullptr;          // made by the first add
  mutable SharedView* sharedView_ = nullptr;  // made when it is first asked for
  std::size_t nextSerial_ = 0;
};

extern template class TarnUniqueAndNonUniqueMultiIndex<
    LibTarnManagedObject, ManagedObjectDistNameExtractor, ManagedObjectClassNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
