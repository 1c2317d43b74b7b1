#include "documents/Edit.hpp"

#include "CommandError.hpp"
#include "output/counted.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

// More than a user looks through.
constexpr std::size_t MOST_WITHOUT_QUESTION = 1000;

}  // namespace

Edit::Edit(const std::string& path, const EditOptions& options)
    : path_(path), options_(options), destination_(path, options.target), file_(path) {
  loadDocument(file_, document_);
}

Selector::Objects Edit::select(const Selection& selection) {
  Selector selector(selection);
  Selector::Objects objects = selector.select(document_);
  selector.requireFound(path_, objects.size());
  return objects;
}

void Edit::confirm(std::size_t count) const {
  if (count <= MOST_WITHOUT_QUESTION || options_.yes) return;
  if (confirms("Change " + counted(count, "object") + " of " + printable(path_) + "?")) return;
  throw CommandError(Status::UsageError, path_, "not confirmed; nothing was written");
}

void Edit::finish(const std::string& report) { writeResult(document_, destination_, report); }

void requireSelection(const Selection& selection, const EditOptions& options) {
  if (options.everything && !selection.isEmpty()) {
    throwUsageError("--everything has no meaning beside options that select");
  }
  if (!options.everything && selection.isEmpty()) {
    throwUsageError("no objects are selected; --everything selects all");
  }
}

}  // namespace tarn
