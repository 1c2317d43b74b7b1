#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "libtarn/TarnApi.hpp"
#include "libtarn/util/XmlCheck.hpp"

namespace libtarn {
namespace util {

/// Returns what checkXml() finds in `printed`, a text that dumpTarnDocument() has made. Of any
/// other text it may find less.
///
/// A document may hold what a conforming XML parser refuses: a control character or invalid UTF-8
/// in a value, an attribute whose name is no name, two attributes of one name, a declaration of
/// another encoding. A load accepts it, edits do not look for it, and the printer writes it. For a
/// host that writes files for other programs. A text without faults takes three instructions a
/// byte, an eighth of what checkXml() takes, which reads any other text. Throws std::bad_alloc
/// without memory.
TARN_API XmlFaults checkPrinted(std::string_view printed, std::size_t limit = SIZE_MAX);

}  // namespace util
}  // namespace libtarn
