#pragma once

#include <optional>
#include <string>
#include <vector>

#include "documents/documentFile.hpp"
#include "files/TextFile.hpp"

namespace tarn {

/// A file that may have to be loaded again. Open between two operations only when it cannot be
/// opened again, like a pipe, whose text it keeps then. All functions throw CommandError.
class RereadFile {
 public:
  explicit RereadFile(std::string path) : path_(std::move(path)) {}

  const std::string& path() const { return path_; }

  /// Does what loadDocument() does.
  void load(Document& document, Rules rules);

  /// Returns the subject of a message about each of `objects`, of a document that was loaded from
  /// this file: "FILE:LINE:COLUMN: DN". They are in the order of the text. Reads the file once.
  std::vector<std::string> subjectsOf(
      const Document& document,
      const std::vector<const libtarn::model::LibTarnManagedObject*>& objects);

 private:
  TextFile& open();
  void closeIfReopenable();

  std::string path_;
  std::optional<TextFile> file_;
};

}  // namespace tarn
