#pragma once

#include <string>

namespace tarn {

/// Returns true if a document may hold `text`: every character is one that XML allows, in UTF-8.
bool isXmlText(const std::string& text);

/// Throws the CommandError for wrong usage when `text`, which `option` takes, holds a character
/// that XML does not allow, or is no UTF-8: other tools could not read a document with it. Refuses
/// the characters of `changed`, too, which other tools would read as others: line ends and tabs in
/// attributes, a carriage return anywhere.
void requireXmlText(const std::string& option, const std::string& text, const char* changed);

}  // namespace tarn
