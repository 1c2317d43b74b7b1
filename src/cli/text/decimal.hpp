#pragma once

#include <string_view>

namespace tarn {

/// True if `text` is a decimal number: an optional sign, digits, and possibly a point with digits
/// behind it.
bool isDecimal(std::string_view text);

/// Compares two decimal numbers of any length exactly. Returns a number below 0, 0 or above 0 for
/// less, equal or greater.
int compareDecimals(std::string_view a, std::string_view b);

}  // namespace tarn
