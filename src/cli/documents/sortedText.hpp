#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarn {

/// Returns a printed document in a normal form: objects in natural order of their names; in each
/// object parameters, lists and extensions by name in byte order, and the components of items as
/// well; attributes by name. A header comes first. Values of a list, log entries, and elements for
/// which the format has no place keep their order. Returns nothing for a text that no print has
/// made.
///
/// The normal form of a normal form is the same text. Takes time as n log n in the length of the
/// text. Does not recurse on the depth.
std::optional<std::string> sortedText(std::string_view printed);

}  // namespace tarn
