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

/// Makes the indexes of the elements of one document. An index must live as long as its element is
/// used; a document never deletes one.
class TARN_API ITarnIndexFactory {
 public:
  /// Returns a new, empty index for the parameters (`p`) of one object or item. Null is an
  /// assertion in the element that asks for it.
  virtual ITarnUniqueIndex<Scalar>* createUniqueScalarNameTarnIndex() const = 0;
  /// Returns a new, empty index for the lists of one object. Null is an assertion in the element
  /// that asks for it.
  virtual ITarnUniqueIndex<List>* createUniqueIndexForList() const = 0;
  /// Returns a new, empty index for the objects of one cmData. Null is an assertion in the element
  /// that asks for it.
  virtual ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>*
  createUniqueAndNonUniqueMultiIndex() const = 0;

  virtual ~ITarnIndexFactory() = default;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
