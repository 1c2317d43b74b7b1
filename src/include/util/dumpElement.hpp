#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {
class IElement;
}

namespace util {

/// Replaces the content of `out` by the printed element and everything below it: the lines that the
/// printed document has for it, with the same indentation and the last line feed. A detached
/// element is printed without indentation. The element must be of this library (asserted).
TARN_API void dumpElement(const model::IElement& element, std::string& out);
/// As above, wherever the element stands: indented as a document indents elements at `depth`, 0 for
/// no indentation.
TARN_API void dumpElement(const model::IElement& element, std::string& out, unsigned int depth);

}  // namespace util
}  // namespace libtarn
