#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarn {

/// Returns the columns that `text`, in UTF-8, takes on a terminal.
std::size_t displayWidth(std::string_view text);

/// Returns `text`, in UTF-8, shortened in the middle so that it takes at most `columns` columns.
/// Keeps more of its end, where a path has the name of the file. Returns "" when nothing can be
/// kept.
std::string shortened(const std::string& text, std::size_t columns);

}  // namespace tarn
