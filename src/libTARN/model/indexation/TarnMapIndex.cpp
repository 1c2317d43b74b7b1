#include "model/indexation/TarnMapIndex.hpp"

#include "EntryTree.hpp"
#include "model/indexation/CharComparePredicate.hpp"

namespace libtarn {
namespace model {
namespace indexation {

template <class Entry>
struct NameOrder {
  static int compare(const Entry& a, const Entry& b) {
    return CharComparePredicate::compare(a.first, b.first);
  }
};

template <class T, class Extractor>
bool TarnMapIndex<T, Extractor>::add(T* element) {
  if (!tree_) {
    tree_ = new (TarnAllocator<Tree>(pool_).allocate(1)) Tree(pool_);
  }
  return tree_->add({Extractor()(element), element});
}

template <class T, class Extractor>
bool TarnMapIndex<T, Extractor>::remove(T* element) {
  return remove(Extractor()(element));
}

template <class T, class Extractor>
bool TarnMapIndex<T, Extractor>::remove(const char* name) {
  return tree_ && tree_->erase({name, nullptr});
}

template <class T, class Extractor>
T* TarnMapIndex<T, Extractor>::find(const char* name) const {
  const ParameterEntry<T>* const entry = tree_ ? tree_->find({name, nullptr}) : nullptr;
  return entry ? entry->second : nullptr;
}

template <class T, class Extractor>
TarnCollection<ParameterEntry<T>> TarnMapIndex<T, Extractor>::getCollection() const {
  return tree_ ? tree_->collection() : TarnCollection<ParameterEntry<T>>();
}

template <class T, class Extractor>
std::size_t TarnMapIndex<T, Extractor>::size() const {
  return tree_ ? tree_->size() : 0;
}

template class TarnMapIndex<Scalar, ScalarNameExtractor>;
template class TarnMapIndex<List, ListNameExtractor>;

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
