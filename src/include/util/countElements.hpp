#pragma once

#include <cstddef>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {
class IElement;
class LibTarnDocument;
}  // namespace model

namespace util {

/// How many elements a document has.
struct ElementCounts {
  /// All of them, the root included.
  std::size_t elements = 0;
  /// `p` and `list` elements with a name, wherever they stand.
  std::size_t parameters = 0;
  /// The most elements that stand within one another; 1 for a root without children.
  std::size_t depth = 0;
};

/// Counts the elements of `document` in one walk, which does not recurse on the depth.
TARN_API ElementCounts countElements(const model::LibTarnDocument& document);
/// Counts `element` and everything below it, with a depth of 1 for `element` alone. An element of a
/// host class that is no DOM element has none.
TARN_API ElementCounts countElements(const model::IElement& element);

}  // namespace util
}  // namespace libtarn
