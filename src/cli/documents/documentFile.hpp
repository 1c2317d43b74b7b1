#pragma once

#include <string>

#include "files/Destination.hpp"
#include "files/TextFile.hpp"
#include "libtarn/model/LibTarnDocument.hpp"

namespace libtarn::model {
class LibTarnCmData;
}

namespace tarn {

/// Whether a load validates.
enum class Rules { Unchecked, Checked };

/// A document of the command. Its operations throw std::bad_alloc when memory runs out.
class Document : public libtarn::model::LibTarnDocument {
 public:
  Document() : LibTarnDocument(libtarn::model::OutOfMemory::Throw) {}
  /// Loads the file at `path`, as loadDocument() does.
  explicit Document(const std::string& path, Rules rules = Rules::Unchecked);

  /// The file that was loaded last.
  const std::string& path() const { return path_; }

 private:
  friend void loadDocument(TextFile& file, Document& document, Rules rules);

  std::string path_;
};

/// Loads the file at `path`, "-" for standard input, into `document`. Throws CommandError for a
/// file that cannot be read, malformed XML or a broken rule of the model.
void loadDocument(const std::string& path, Document& document, Rules rules = Rules::Unchecked);

/// As above, for a file that is already open.
void loadDocument(TextFile& file, Document& document, Rules rules = Rules::Unchecked);

/// Throws the CommandError for a text that was refused. Reads the file again to find line and
/// column.
[[noreturn]] void throwRefused(TextFile& file, const libtarn::model::Diagnostic& diagnostic);

/// Returns the cmData of a document that was loaded from `path`. Throws CommandError without one.
libtarn::model::LibTarnCmData& requireCmData(const Document& document, const std::string& path);

/// Writes the document to `destination`. Writes `report`, which says what was done, to standard
/// output, or to standard error when the document goes to standard output. A file is replaced last,
/// after the report. Throws CommandError and OutputClosed, with the file unchanged, also for a
/// document that other XML parsers would refuse: see writtenText().
void writeResult(Document& document, Destination& destination, const std::string& report);

/// As above, for a text that has been checked.
void writeResult(const std::string& text, Destination& destination, const std::string& report);

}  // namespace tarn
