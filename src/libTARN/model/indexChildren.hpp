#pragma once

#include "../text/patternText.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/model/indexation/ITarnUniqueIndex.hpp"

namespace libtarn {
namespace model {

/// Adds `element` to `index`. Returns true also when the index already holds this very element, as
/// after a second rebuild; false when it holds another one of that name.
template <class Element>
bool indexOnce(indexation::ITarnUniqueIndex<Element>& index, Element& element) {
  return index.add(&element) || index.find(textOrEmpty(element.getName())) == &element;
}

/// Returns `index`, which must not be null (asserted).
template <class Index>
Index* checkedIndex(Index* index) {
  TARN_ASSERT(index, "memory");
  return index;
}

}  // namespace model
}  // namespace libtarn
