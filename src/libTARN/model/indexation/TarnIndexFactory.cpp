#include "libtarn/model/indexation/TarnIndexFactory.hpp"

#include <new>

#include "libtarn/model/indexation/TarnMapIndex.hpp"
#include "libtarn/model/indexation/TarnUniqueAndNonUniqueMultiIndex.hpp"

namespace libtarn {
namespace model {
namespace indexation {

template <class Index>
Index* TarnIndexFactory::create() const {
  void* const memory = pool_.allocateMemory(sizeof(Index));
  return memory ? new (memory) Index(pool_) : nullptr;
}

ITarnUniqueIndex<Scalar>* TarnIndexFactory::createUniqueScalarNameTarnIndex() const {
  return create<TarnMapIndex<Scalar, ScalarNameExtractor>>();
}

ITarnUniqueIndex<List>* TarnIndexFactory::createUniqueIndexForList() const {
  return create<TarnMapIndex<List, ListNameExtractor>>();
}

ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>*
TarnIndexFactory::createUniqueAndNonUniqueMultiIndex() const {
  return create<TarnUniqueAndNonUniqueMultiIndex<
      LibTarnManagedObject, ManagedObjectDistNameExtractor, ManagedObjectClassNameExtractor>>();
}

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
