#include "documents/Edit.hpp"

#include <utility>

#include "CommandError.hpp"
#include "libtarn/editor/TarnDiff.hpp"
#include "output/counted.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

// More than a user looks through.
constexpr std::size_t MOST_WITHOUT_QUESTION = 1000;

std::optional<Destination> destinationOf(const std::string& path, const EditOptions& options) {
  if (options.dryRun.isAsked) return std::nullopt;
  return std::optional<Destination>(std::in_place, path, options.target);
}

}  // namespace

Edit::Edit(const std::string& path, const EditOptions& options)
    : path_(path), options_(options), destination_(destinationOf(path, options)), file_(path) {
  loadDocument(file_, document_);
}

Selector::Objects Edit::select(const Selection& selection) {
  Selector selector(selection);
  Selector::Objects objects = selector.select(document_);
  selector.requireFound(path_, objects.size());
  return objects;
}

void Edit::confirm(std::size_t count) const {
  if (count <= MOST_WITHOUT_QUESTION || options_.yes || isDryRun()) return;
  if (confirms("Change " + counted(count, "object") + " of " + printable(path_) + "?")) return;
  throw CommandError(Status::UsageError, path_, "not confirmed; nothing was written");
}

void Edit::finish(const std::string& report) {
  if (isDryRun()) return showChanges(report);
  writeResult(document_, *destination_, report);
}

// The text is loaded once more, since the document has been changed.
void Edit::showChanges(const std::string& report) {
  Document before;
  loadDocument(file_, before);
  libtarn::editor::DiffOptions options;
  options.operations = true;
  libtarn::editor::TarnDiff diff(before, document_, options);
  finishDryRun(document_, options_.target, options_.dryRun,
               {path_, report, true, std::move(diff).getDifferences()});
}

void requireSelection(const Selection& selection, const EditOptions& options) {
  if (options.everything && !selection.isEmpty()) {
    throwUsageError("--everything has no meaning beside options that select");
  }
  if (!options.everything && selection.isEmpty()) {
    throwUsageError("no objects are selected; --everything selects all");
  }
}

}  // namespace tarn
