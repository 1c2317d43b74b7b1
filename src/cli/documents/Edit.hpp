#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "documents/DryRun.hpp"
#include "documents/Selection.hpp"
#include "documents/documentFile.hpp"
#include "files/Destination.hpp"
#include "files/TextFile.hpp"

namespace tarn {

/// The options of a command that changes a document.
struct EditOptions {
  Target target;
  bool everything = false;  ///< Changes all objects when there is no selection.
  bool yes = false;         ///< Does not ask.
  DryRun dryRun;
  bool keepLayout = false;  ///< Changes nothing of the text but what the command changes.
};

/// A document that a command changes: loaded from a file, and written when all is done. A dry run
/// locks and writes nothing.
class Edit {
 public:
  /// Throws CommandError, with the file unchanged, as every function here.
  Edit(const std::string& path, const EditOptions& options);

  Document& document() { return document_; }
  /// Returns the selected objects, in the order of the text.
  Selector::Objects select(Selector& selector) const;
  /// Asks the user, in a terminal, before more than 1,000 objects are changed.
  void confirm(std::size_t count) const;
  bool isDryRun() const { return options_.dryRun.isAsked; }
  /// Writes the document, and `report`, which says what was done. A dry run shows the changes.
  void finish(const std::string& report);

 private:
  void showChanges(const std::string& report);
  std::string result();

  std::string path_;
  EditOptions options_;
  std::optional<Destination> destination_;  // none in a dry run
  TextFile file_;
  Document document_;
};

/// Throws CommandError when nothing is selected and the options do not say that everything is
/// meant.
void requireSelection(const Selection& selection, const EditOptions& options);

}  // namespace tarn
