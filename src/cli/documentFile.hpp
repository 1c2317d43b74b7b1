#pragma once

#include <string>

#include "Destination.hpp"
#include "TextFile.hpp"
#include "model/LibTarnDocument.hpp"

namespace tarn {

/// Loads the file at `path`, "-" for standard input, into `document` without validation. Throws
/// CommandError for a file that cannot be read, malformed XML or a broken rule of the model.
void loadDocument(const std::string& path, libtarn::model::LibTarnDocument& document);
void loadDocument(TextFile& file, libtarn::model::LibTarnDocument& document);
/// As above, with validation.
void loadValidDocument(const std::string& path, libtarn::model::LibTarnDocument& document);
void loadValidDocument(TextFile& file, libtarn::model::LibTarnDocument& document);

/// Writes the document to `destination`, and `report` on what was done to standard output, or to
/// standard error when the document goes there. A file is replaced last, once all that it is
/// reported with has been written. Throws CommandError and OutputClosed, with the file as it was.
void writeResult(libtarn::model::LibTarnDocument& document, Destination& destination,
                 const std::string& report);

}  // namespace tarn
