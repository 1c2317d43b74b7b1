#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/indexation/ITarnUniqueIndex.hpp"

namespace libtarn {
namespace model {

class LibTarnManagedObject;
class List;
class Scalar;

namespace indexation {

template <class T>
class ITarnUniqueAndNonUniqueMultiIndex;

/// Makes the indexes of a document's elements. What it makes must live as long as the document.
class TARN_API ITarnIndexFactory {
 public:
  /// A new, empty index for the `p`, the lists and the objects of one element; never null.
  virtual ITarnUniqueIndex<Scalar>* createUniqueScalarNameTarnIndex() const = 0;
  virtual ITarnUniqueIndex<List>* createUniqueIndexForList() const = 0;
  virtual ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>*
  createUniqueAndNonUniqueMultiIndex() const = 0;

  virtual ~ITarnIndexFactory() = default;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
