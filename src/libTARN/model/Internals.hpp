#pragma once

#include <typeinfo>

#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/indexation/TarnMapIndex.hpp"
#include "libtarn/model/indexation/TarnUniqueAndNonUniqueMultiIndex.hpp"

namespace libtarn {
namespace model {

/// Returns true if `object` is exactly a `Class`, not of a class that a host derived from it.
template <class Class, class Object>
bool isExactly(const Object& object) {
  return typeid(object) == typeid(Class);
}

/// Access to the indexes and kept values of node classes, for sources of the library that fill or
/// read them directly. The index must be the library's own.
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
  static EnumeratedAttribute<LibTarnCmData::Type>& type(LibTarnCmDataImp& cmData) {
    return cmData.type_;
  }

  // Throw DuplicateElementException, as indexing the parent does for a child whose name is taken.
  [[noreturn]] static void throwDuplicate(const LibTarnManagedObjectImp& object,
                                          const char* childTag, const char* name) {
    object.throwDuplicate(childTag, name);
  }
  [[noreturn]] static void throwDuplicate(const StructureImp& item, const ScalarImp& component) {
    StructureImp::throwDuplicate(item.parentText(), component);
  }
};

}  // namespace model
}  // namespace libtarn
