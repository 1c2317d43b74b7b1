#pragma once

#include <string>

#include "model/LibTarnDocument.hpp"

namespace tarn {

/// Loads the file at `path` into `document` without validation. Throws CommandError for a file that
/// cannot be read, malformed XML or a broken rule of the model.
void loadDocument(const std::string& path, libtarn::model::LibTarnDocument& document);
/// As above, with validation.
void loadValidDocument(const std::string& path, libtarn::model::LibTarnDocument& document);

/// Writes `text` to standard output. Throws CommandError when not all of it can be written.
void writeOutput(const std::string& text);

}  // namespace tarn
