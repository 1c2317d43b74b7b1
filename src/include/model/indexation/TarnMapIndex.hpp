#pragma once

#include "libtarn/IMemoryPool.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/model/indexation/ITarnUniqueIndex.hpp"
#include "libtarn/model/indexation/ListNameExtractor.hpp"
#include "libtarn/model/indexation/ScalarNameExtractor.hpp"

namespace libtarn {
namespace model {
namespace indexation {

template <class T>
struct NamedEntries;

/// An ordered index of elements by name, all of it in a pool.
///
/// Look-up, add and remove cost O(log n). Adding in name order costs one comparison each. Entries
/// that fill() took unsorted are sorted when one is first looked up or changed. Nothing is
/// allocated before the first add. When the pool is out of memory, an operation throws
/// std::bad_alloc and changes nothing. Instantiated for Scalar and List.
template <class T, class Extractor>
class TARN_API TarnMapIndex : public ITarnUniqueIndex<T> {
 public:
  /// An empty index in `pool`, which must outlive it.
  explicit TarnMapIndex(libDomXml::IMemoryPool& pool) : pool_(&pool) {}

  bool add(T* element) override;
  bool remove(T* element) override;
  bool remove(const char* name) override;
  T* find(const char* name) const override;
  TarnCollection<ParameterEntry<T>> getCollection() const override;
  std::size_t size() const override;

  /// Adds `count` entries of distinct names at once; `sorted` says whether they are in order.
  /// Returns false, with nothing changed, when entries were added before, or for more than 2^31 -
  /// 1.
  bool fill(const ParameterEntry<T>* entries, std::size_t count, bool sorted);
  /// Removes all entries. No iterator may be in the collection.
  void clear() { entries_ = nullptr; }
  /// Returns all entries in the cheapest order. Iterators are valid until the index changes.
  TarnCollection<ParameterEntry<T>> getUnordered() const;

 private:
  using Entry = ParameterEntry<T>;

  // Returns the entries, sorted; null before the first one.
  NamedEntries<T>* ordered() const;

  libDomXml::IMemoryPool* pool_;
  NamedEntries<T>* entries_ = nullptr;  // made by the first add: many elements have none
};

extern template class TARN_API TarnMapIndex<Scalar, ScalarNameExtractor>;
extern template class TARN_API TarnMapIndex<List, ListNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
