#pragma once

#include <string>
#include <vector>

#include "libtarn/editor/Difference.hpp"

namespace tarn {

class Document;
struct Target;

/// The options of a command that shows what it would change.
struct DryRun {
  bool isAsked = false;  ///< Shows the changes and writes nothing.
  bool json = false;     ///< Shows them in JSON.
};

/// What a dry run shows.
struct DryRunResult {
  std::string source;  ///< The file that would be changed.
  std::string report;  ///< Says what would be done.
  bool operations;     ///< The contents of objects have their operation.
  std::vector<libtarn::editor::Difference> differences;
};

/// Writes the differences of `result` to standard output and its report to standard error, with a
/// note that nothing was written. Throws CommandError for a document that writeResult() would
/// refuse to write to `target`.
void finishDryRun(Document& document, const Target& target, const DryRun& options,
                  DryRunResult result);

}  // namespace tarn
