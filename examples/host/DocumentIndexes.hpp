#pragma once

#include <memory>

#include "model/TarnDomDocument.hpp"
#include "model/indexation/TarnIndexFactory.hpp"

/// The library's indexes, in the memory of a document that is made with this factory, and so is
/// there only after it.
class DocumentIndexes : public libtarn::model::indexation::ITarnIndexFactory {
 public:
  /// Before the document makes its first element.
  void useMemoryOf(libtarn::model::TarnDomDocument& document) {
    factory_ = std::make_unique<libtarn::model::indexation::TarnIndexFactory>(document);
  }

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
  std::unique_ptr<libtarn::model::indexation::TarnIndexFactory> factory_;
};
