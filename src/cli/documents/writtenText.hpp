#pragma once

#include <string>

namespace tarn {

class Document;

/// Returns the printed document, which every conforming XML parser accepts. A document that
/// declares US-ASCII has references for other characters. Throws CommandError with the place for a
/// document that holds what XML does not allow, such as a control character in a value.
std::string writtenText(Document& document);

/// Throws the CommandError for wrong usage when `text`, an argument, holds characters that no value
/// of a document may have.
void requireXmlText(const std::string& text);

}  // namespace tarn
