#pragma once

#include <vector>

#include "Assertion.hpp"
#include "IndexingParse.hpp"
#include "model/indexation/ITarnUniqueIndex.hpp"
#include "patternText.hpp"

namespace libtarn {
namespace model {

/// Adds `element` to `index`. True also when the index holds this very element already, as after a
/// second rebuild; false when it holds another one of that name.
template <class Element>
bool indexOnce(indexation::ITarnUniqueIndex<Element>& index, Element& element) {
  return index.add(&element) || index.find(textOrEmpty(element.getName())) == &element;
}

/// Gives `names` to a fresh index, in effect from when `condition` becomes true. False when names
/// may be the same, or the index cannot do it.
template <class Element>
bool indexOnceTrue(indexation::ITarnUniqueIndex<Element>& index, ParsedNames<Element>& names,
                   const bool& condition) {
  if (names.size() == 0) return true;
  const NameOrder order = names.order();
  return order != NameOrder::UNKNOWN &&
         index.addOnceTrue(condition, names.entries(), names.size(), order == NameOrder::SORTED);
}

/// A fresh index, which a factory may fail to give.
template <class Index>
Index* checkedIndex(Index* index) {
  TARN_ASSERT(index, "memory");
  return index;
}

}  // namespace model
}  // namespace libtarn
