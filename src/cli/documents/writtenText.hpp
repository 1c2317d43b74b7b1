#pragma once

#include <string>

namespace tarn {

class Document;

/// Returns the printed document, which every conforming XML parser accepts. A document that
/// declares US-ASCII has references for other characters. Throws CommandError with the place for a
/// document that holds what XML does not allow, such as a control character in a value.
/// `destination` is the name that the progress shows.
std::string writtenText(Document& document, const std::string& destination);

/// Returns true if every conforming XML parser accepts `text`, which no print has made. In one that
/// declares US-ASCII other characters become references. Otherwise returns false, with the reason
/// in `reason`.
bool makeWritable(std::string& text, std::string& reason);

}  // namespace tarn
