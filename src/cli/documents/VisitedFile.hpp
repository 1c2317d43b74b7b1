#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "documents/documentFile.hpp"
#include "files/TextFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// A file whose managed objects are read one after the other, which takes little more memory than
/// its text. Texts in the objects are valid as long as the VisitedFile.
class VisitedFile {
 public:
  using Visit = std::function<void(const libtarn::model::LibTarnManagedObject& object)>;

  explicit VisitedFile(const std::string& path) : file_(path) {}

  /// Calls `visit` for each object in the order of the text; an object is valid until `visit`
  /// returns. Calls `restart` when all calls before count for nothing, and visits the objects
  /// again. Throws CommandError for a file that cannot be loaded.
  void visitObjects(const Visit& visit, const std::function<void()>& restart);

 private:
  TextFile file_;
  std::vector<char> text_;
  std::optional<Document> document_;
};

}  // namespace tarn
