#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// A name of the tree that distinguished names form.
struct TreeName {
  std::string_view segment;                            ///< The part of the name after the last "/".
  std::size_t depth;                                   ///< Number of names above it.
  const libtarn::model::LibTarnManagedObject* object;  ///< Null: no object has that name.
};

/// Returns the tree of the names of `objects`: each name is followed by all below it, and siblings
/// stand in the order of their first objects. Points into the documents of the objects. Takes
/// n log n of the size of the names. Nothing recurses, since a document decides how deep the tree
/// is.
std::vector<TreeName> treeOfNames(
    const std::vector<const libtarn::model::LibTarnManagedObject*>& objects);

}  // namespace tarn
