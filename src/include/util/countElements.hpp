#pragma once

#include <cstddef>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {
class LibTarnDocument;
}

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

}  // namespace util
}  // namespace libtarn
