#pragma once

#include <typeinfo>

#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/indexation/TarnMapIndex.hpp"
#include "libtarn/model/indexation/TarnUniqueAndNonUniqueMultiIndex.hpp"

namespace libtarn {
namespace model {

/// Whether `object` is a `Class`, and not of a class derived from it, which a host may bring.
template <class Class, class Object>
bool isExactly(const Object& object) {
  return typeid(object) == typeid(Class);
}

/// The indexes and kept values of node classes, for those sources of the library that fill or read
/// them past the usual operations. Where the library's own index is asked for, it must be one.
struct Internals {
  using ScalarIndex = indexation::TarnMapIndex<Scalar, indexation::ScalarNameExtractor>;
  using ListIndex = indexation::TarnMapIndex<List, indexation::ListNameExtractor>;
  using ObjectIndex =
      indexation::TarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject,
                                                   indexation::ManagedObjectDistNameExtractor,
                                                   indexation::ManagedObjectClassNameExtractor>;

  static ObjectIndex& objectIndex(const LibTarnCmDataImp& cmData) {
    return static_cast<ObjectIndex&>(*cmData.managedObjectIndex_);
  }
  static ScalarIndex& scalarIndex(const LibTarnManagedObjectImp& object) {
    return static_cast<ScalarIndex&>(*object.scalarIndex_);
  }
  static ListIndex& listIndex(const LibTarnManagedObjectImp& object) {
    return static_cast<ListIndex&>(*object.listIndex_);
  }
  static ScalarIndex& componentIndex(const StructureImp& item) {
    return static_cast<ScalarIndex&>(*item.componentIndex_);
  }

  static bool isLibraryIndexed(const LibTarnCmDataImp& cmData) {
    return isExactly<ObjectIndex>(*cmData.managedObjectIndex_);
  }
  static bool isLibraryIndexed(const LibTarnManagedObjectImp& object) {
    return isExactly<ScalarIndex>(*object.scalarIndex_) && isExactly<ListIndex>(*object.listIndex_);
  }
  static bool isLibraryIndexed(const StructureImp& item) {
    return isExactly<ScalarIndex>(*item.componentIndex_);
  }

  static EnumeratedAttribute<LibTarnManagedObject::Operation>& operation(
      LibTarnManagedObjectImp& object) {
    return object.operation_;
  }
};

}  // namespace model
}  // namespace libtarn
