#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tarn {

/// Returns `original` with the changes that lead to `printed`, the printed form of the changed
/// document; everything else stays as it is, byte by byte. Returns nothing when the changes cannot
/// be made in this way.
///
/// The caller checks what the result means: texts between elements, which the printed form does not
/// have, may come to mean something else. Takes time as n log n in the length of the texts, and
/// twice their memory. Does not recurse on the depth.
std::optional<std::string> keepLayout(std::string_view original, std::string_view printed);

}  // namespace tarn
