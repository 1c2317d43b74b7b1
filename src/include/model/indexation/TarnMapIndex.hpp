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
/// Look-up, add and remove cost O(log n); adding in the order of the names costs one comparison
/// each. Entries that were taken over unsorted are sorted when they are first asked for. Nothing is
/// taken from the pool before the first add. When the pool has no memory the operation throws
/// std::bad_alloc and changes nothing. Instantiated for Scalar and List.
template <class T, class Extractor>
class TARN_API TarnMapIndex : public ITarnUniqueIndex<T> {
 public:
  explicit TarnMapIndex(libDomXml::IMemoryPool& pool) : pool_(&pool) {}

  bool add(T* element) override;
  bool remove(T* element) override;
  bool remove(const char* name) override;
  T* find(const char* name) const override;
  TarnCollection<ParameterEntry<T>> getCollection() const override;
  std::size_t size() const override;

  /// Adds `count` entries of distinct names, all at once; `sorted` when they are in order. False,
  /// with nothing changed, when the index was given any before, or for more than 2^31 - 1.
  bool fill(const ParameterEntry<T>* entries, std::size_t count, bool sorted);
  /// Removes all entries. No walk may be in the collection.
  void clear() { entries_ = nullptr; }
  /// All entries in whatever order is cheapest. The walk must not outlive a change.
  TarnCollection<ParameterEntry<T>> getUnordered() const;

 private:
  using Entry = ParameterEntry<T>;

  // The entries in order; null before the first one.
  NamedEntries<T>* ordered() const;

  libDomXml::IMemoryPool* pool_;
  NamedEntries<T>* entries_ = nullptr;  // made by the first add: many elements have none
};

extern template class TARN_API TarnMapIndex<Scalar, ScalarNameExtractor>;
extern template class TARN_API TarnMapIndex<List, ListNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
