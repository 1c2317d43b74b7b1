#pragma once

#include <string>

namespace tarn {

class Document;

/// Returns the printed document, which every conforming XML parser accepts. A document that
/// declares US-ASCII has references for other characters. Throws CommandError with the place for a
/// document that holds what XML does not allow, such as a control character in a value.
/// `destination` is the name that the progress shows.
std::string writtenText(Document& document, const std::string& destination);

}  // namespace tarn
