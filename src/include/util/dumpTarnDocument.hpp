#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {
class LibTarnDocument;
}

namespace util {

/// Replaces the content of `out` by the printed document: the declaration and the root.
TARN_API void dumpTarnDocument(model::LibTarnDocument& document, std::string& out);

}  // namespace util
}  // namespace libtarn
