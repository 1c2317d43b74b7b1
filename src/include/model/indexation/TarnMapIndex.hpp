#pragma once

#include "IMemoryPool.hpp"
#include "model/indexation/ITarnUniqueIndex.hpp"
#include "model/indexation/ListNameExtractor.hpp"
#include "model/indexation/ScalarNameExtractor.hpp"

namespace libtarn {
namespace model {
namespace indexation {

template <class Entry, class Order>
class EntryTree;
template <class Entry>
struct NameOrder;

/// An ordered index of elements by name, all of it in a pool.
///
/// Look-up, add and remove cost O(log n); adding in the order of the names costs one comparison
/// each. Nothing is taken from the pool before the first add. When the pool has no memory add()
/// throws std::bad_alloc and changes nothing. Instantiated for Scalar and List.
template <class T, class Extractor>
class TarnMapIndex : public ITarnUniqueIndex<T> {
 public:
  explicit TarnMapIndex(libDomXml::IMemoryPool& pool) : pool_(&pool) {}

  bool add(T* element) override;
  bool remove(T* element) override;
  bool remove(const char* name) override;
  T* find(const char* name) const override;
  TarnCollection<ParameterEntry<T>> getCollection() const override;
  std::size_t size() const override;

 private:
  using Tree = EntryTree<ParameterEntry<T>, NameOrder<ParameterEntry<T>>>;

  libDomXml::IMemoryPool* pool_;
  Tree* tree_ = nullptr;  // made by the first add: many elements have nothing to index
};

extern template class TarnMapIndex<Scalar, ScalarNameExtractor>;
extern template class TarnMapIndex<List, ListNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
