#pragma once

#include <string>

namespace tarn {

/// Throws the CommandError for wrong usage when `text`, which `option` takes, holds a character
/// that XML does not allow, or is no UTF-8: other tools could not read a document with it.
void requireXmlText(const std::string& option, const std::string& text);

}  // namespace tarn
