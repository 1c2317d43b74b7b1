#pragma once

#include "libtarn/IMemoryPool.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/model/indexation/ITarnIndexFactory.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// Makes the library's own indexes, in a pool.
class TARN_API TarnIndexFactory : public ITarnIndexFactory {
 public:
  /// Makes indexes in `pool`, which must outlive them.
  explicit TarnIndexFactory(libDomXml::IMemoryPool& pool) : pool_(pool) {}

  /// Returns a new, empty index in the pool, or null when the pool is out of memory.
  ITarnUniqueIndex<Scalar>* createUniqueScalarNameTarnIndex() const override;
  /// Returns a new, empty index in the pool, or null when the pool is out of memory.
  ITarnUniqueIndex<List>* createUniqueIndexForList() const override;
  /// Returns a new, empty index in the pool, or null when the pool is out of memory.
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
