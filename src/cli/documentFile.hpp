#pragma once

#include <string>

#include "TextFile.hpp"
#include "model/LibTarnDocument.hpp"

namespace tarn {

/// Where a command puts the document that it made.
struct Target {
  std::string output = "-";  ///< "-" is standard output.
  bool inPlace = false;      ///< The result replaces the document that was loaded.
};

/// Loads the file at `path`, "-" for standard input, into `document` without validation. Throws
/// CommandError for a file that cannot be read, malformed XML or a broken rule of the model.
void loadDocument(const std::string& path, libtarn::model::LibTarnDocument& document);
void loadDocument(TextFile& file, libtarn::model::LibTarnDocument& document);
/// As above, with validation.
void loadValidDocument(const std::string& path, libtarn::model::LibTarnDocument& document);
void loadValidDocument(TextFile& file, libtarn::model::LibTarnDocument& document);

/// Writes the document, which came from `path`, to the target, and then `report` on what was done:
/// to standard output, or to standard error when the document goes there. Throws CommandError.
void writeResult(libtarn::model::LibTarnDocument& document, const std::string& path,
                 const Target& target, const std::string& report);

}  // namespace tarn
