#pragma once

#include <functional>

#include "libtarn/IMemoryPool.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/model/indexation/ITarnUniqueAndNonUniqueMultiIndex.hpp"
#include "libtarn/model/indexation/ManagedObjectClassNameExtractor.hpp"
#include "libtarn/model/indexation/ManagedObjectDistNameExtractor.hpp"

namespace libtarn {
namespace model {
namespace indexation {

struct HashedObject;
class ObjectTable;
template <class Order>
class ObjectView;
struct UniqueKeyOrder;
struct SharedKeyOrder;

/// An ordered index of managed objects with two views, by name and by class, all of it in a pool.
///
/// Objects are found by name in a hash table. Each view is built when its order is first asked for,
/// in O(n log n), and kept up to date from then on. Add and remove cost O(1) while there is no
/// view, O(log n) with one. When names crowd the hash table, the index replaces it by the view by
/// name. When the pool is out of memory, an operation throws std::bad_alloc and changes nothing.
/// Instantiated for LibTarnManagedObject.
template <class T, class UniqueExtractor, class NonUniqueExtractor>
class TARN_API TarnUniqueAndNonUniqueMultiIndex : public ITarnUniqueAndNonUniqueMultiIndex<T> {
 public:
  /// An empty index in `pool`, which must outlive it.
  explicit TarnUniqueAndNonUniqueMultiIndex(libDomXml::IMemoryPool& pool) : pool_(&pool) {}

  bool add(T* element) override;
  bool remove(T* element) override;
  T* findUniqueElement(const char* key) const override;
  ManagedObjectCollection getNonUniqueCollection(const char* key) const override;
  ManagedObjectCollection getCollection() const override;
  std::size_t size() const override;
  void clear() override;
  void prepareAdd(const char* key) override;

  /// Calls `visit` for every element, in the cheapest order. `visit` must not change the index.
  void forEach(const std::function<void(T*)>& visit) const;
  /// Adds `count` objects at once, in this order, and reads nothing of the elements. Returns false,
  /// with nothing changed, when two have the same name, names crowd the table, or the index is not
  /// empty.
  bool fill(const HashedObject* objects, std::size_t count);

 private:
  using UniqueView = ObjectView<UniqueKeyOrder>;
  using SharedView = ObjectView<SharedKeyOrder>;

  void makeTable();
  const ManagedObjectEntry* findEntry(const char* key) const;
  bool addUnique(const ManagedObjectEntry& entry);
  void eraseUnique(const char* key);
  UniqueView& uniqueView() const;
  SharedView& sharedView() const;
  void eraseFromSharedView(const ManagedObjectEntry& entry);

  libDomXml::IMemoryPool* pool_;
  ObjectTable* table_ = nullptr;              // made by the first add; null when names crowd it
  mutable UniqueView* uniqueView_ = nullptr;  // made when it is first asked for
  mutable SharedView* sharedView_ = nullptr;  // likewise
  std::size_t size_ = 0;
  std::size_t nextSerial_ = 0;
};

extern template class TARN_API TarnUniqueAndNonUniqueMultiIndex<
    LibTarnManagedObject, ManagedObjectDistNameExtractor, ManagedObjectClassNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
