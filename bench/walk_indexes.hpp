#pragma once

#include <cstddef>

#include "libtarn/libtarn.hpp"

namespace bench {

/// Walks the index of each item of each list of `object`. Returns the number of lists and entries.
inline std::size_t walkLists(const libtarn::model::LibTarnManagedObject& object) {
  std::size_t count = 0;
  for (const auto& list : object.getListParameters()) {
    ++count;
    for (const libtarn::model::Structure* item = list.second->getStructuredValues(); item;
         item = item->getNextSiblingElement()) {
      for (const auto& component : item->getComponents()) count += component.second != nullptr;
    }
  }
  return count;
}

/// Walks every index of the document, which sorts those that are sorted when first needed. Returns
/// the number of entries.
inline std::size_t walkIndexes(const libtarn::model::LibTarnDocument& document) {
  std::size_t count = 0;
  const libtarn::model::LibTarnCmData& cmData = *document.getLibTarnCmData();
  for (const libtarn::model::LibTarnManagedObject* object : cmData.getLibTarnManagedObjects()) {
    for (const auto& parameter : object->getScalarParameters()) {
      count += parameter.second != nullptr;
    }
    count += walkLists(*object);
  }
  for (const libtarn::model::LibTarnManagedObject* object :
       cmData.getLibTarnManagedObjectsByClass("CELL")) {
    count += object != nullptr;
  }
  return count;
}

}  // namespace bench
