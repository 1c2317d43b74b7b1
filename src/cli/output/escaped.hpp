#pragma once

#include <string>
#include <string_view>

namespace tarn {

/// Appends `text` to `line` with tabs, line ends and backslashes escaped: \t, \n, \r, \\.
void appendEscaped(std::string& line, std::string_view text);

}  // namespace tarn
