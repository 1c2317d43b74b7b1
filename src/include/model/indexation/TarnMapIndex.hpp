#pragma once

#include "IMemoryPool.hpp"
#include "TarnApi.hpp"
#include "model/indexation/ITarnUniqueIndex.hpp"
#include "model/indexation/ListNameExtractor.hpp"
#include "model/indexation/ScalarNameExtractor.hpp"

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
  TarnCollection<ParameterEntry<T>> getUnordered() const override;
  bool addOnceTrue(const bool& condition, const ParameterEntry<T>* entries, std::size_t count,
                   bool sorted) override;

 private:
  using Entry = ParameterEntry<T>;

  // The entries, null when there are none, as they are or in order.
  NamedEntries<T>* current() const;
  NamedEntries<T>* ordered() const;

  libDomXml::IMemoryPool* pool_;
  NamedEntries<T>* entries_ = nullptr;  // made by the first add: many elements have none
};

extern template class TARN_API TarnMapIndex<Scalar, ScalarNameExtractor>;
extern template class TARN_API TarnMapIndex<List, ListNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
