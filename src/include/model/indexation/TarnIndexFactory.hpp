#pragma once

#include "libtarn/IMemoryPool.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/model/indexation/ITarnIndexFactory.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// Makes indexes in a pool. Each operation gives null when the pool has no memory for the index.
class TARN_API TarnIndexFactory : public ITarnIndexFactory {
 public:
  /// Makes indexes in `pool`, which must outlive it.
  explicit TarnIndexFactory(libDomXml::IMemoryPool& pool) : pool_(pool) {}

  /// A new, empty index in the pool, or null.
  ITarnUniqueIndex<Scalar>* createUniqueScalarNameTarnIndex() const override;
  ITarnUniqueIndex<List>* createUniqueIndexForList() const override;
  ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>* createUniqueAndNonUniqueMultiIndex()
      const override;

 private:
  template <class Index>
  Index* create() const;

  libDomXml::IMemoryPool& pool_;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
