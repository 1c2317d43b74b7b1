#pragma once

#include <optional>

#include "model/indexation/TarnIndexFactory.hpp"

namespace tarn_test {

/// An index factory in the pool of the document that it is given to, which is made after it: with
/// it a host's document keeps everything in its own pool.
class LateIndexFactory : public libtarn::model::indexation::ITarnIndexFactory {
 public:
  /// Before the first index is asked for.
  void useFor(libDomXml::IMemoryPool& pool) { factory_.emplace(pool); }

  libtarn::model::indexation::ITarnUniqueIndex<libtarn::model::Scalar>*
  createUniqueScalarNameTarnIndex() const override {
    return factory_->createUniqueScalarNameTarnIndex();
  }
  libtarn::model::indexation::ITarnUniqueIndex<libtarn::model::List>* createUniqueIndexForList()
      const override {
    return factory_->createUniqueIndexForList();
  }
  libtarn::model::indexation::ITarnUniqueAndNonUniqueMultiIndex<
      libtarn::model::LibTarnManagedObject>*
  createUniqueAndNonUniqueMultiIndex() const override {
    return factory_->createUniqueAndNonUniqueMultiIndex();
  }

 private:
  std::optional<libtarn::model::indexation::TarnIndexFactory> factory_;
};

}  // namespace tarn_test
