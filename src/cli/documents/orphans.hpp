#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "documents/Selection.hpp"

namespace tarn {

/// Returns the objects of `document` whose names are below one of `names` and are none of them, in
/// the order of the text.
Selector::Objects objectsBelow(const Document& document,
                               const std::vector<std::string_view>& names);

/// Says that `count` objects stay when what they are below is removed: "2 objects stay without a
/// parent".
std::string withoutParent(std::size_t count);

}  // namespace tarn
