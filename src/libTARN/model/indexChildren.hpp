#pragma once

#include "libtarn/Assertion.hpp"
#include "libtarn/model/indexation/ITarnUniqueIndex.hpp"
#include "patternText.hpp"

namespace libtarn {
namespace model {

/// Adds `element` to `index`. True also when the index holds this very element already, as after a
/// second rebuild; false when it holds another one of that name.
template <class Element>
bool indexOnce(indexation::ITarnUniqueIndex<Element>& index, Element& element) {
  return index.add(&element) || index.find(textOrEmpty(element.getName())) == &element;
}

/// A fresh index, which a factory may fail to give.
template <class Index>
Index* checkedIndex(Index* index) {
  TARN_ASSERT(index, "memory");
  return index;
}

}  // namespace model
}  // namespace libtarn
