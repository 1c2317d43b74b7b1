#include "documents/Edit.hpp"

#include <optional>
#include <utility>
#include <vector>

#include "CommandError.hpp"
#include "documents/keepLayout.hpp"
#include "documents/writtenText.hpp"
#include "libtarn/editor/TarnDiff.hpp"
#include "output/HostLog.hpp"
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

bool isSameDocument(const Document& a, const Document& b) {
  libtarn::editor::DiffOptions options;
  options.operations = true;
  options.logs = true;
  return libtarn::editor::TarnDiff(a, b, options).getDifferences().empty();
}

bool load(Document& document, const std::string& text) {
  std::vector<char> copy(text.begin(), text.end());
  copy.push_back('\0');
  const bool isLoaded = document.parse(std::move(copy), false) == 0;
  HostLog::takeError();  // of a text that is then not written
  return isLoaded;
}

// True if `text` means what `document` holds, or what the printed document means: white space alone
// is no value in a text.
bool means(const Document& document, const std::string& text, const std::string& printed) {
  Document changed;
  if (!load(changed, text)) return false;
  if (isSameDocument(document, changed)) return true;
  Document reloaded;
  return load(reloaded, printed) && isSameDocument(reloaded, changed);
}

}  // namespace

Edit::Edit(const std::string& path, const EditOptions& options)
    : path_(path), options_(options), destination_(destinationOf(path, options)), file_(path) {
  loadDocument(file_, document_);
}

Selector::Objects Edit::select(Selector& selector) const {
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
  writeResult(result(), *destination_, report);
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

// A layout that does not carry the changes is given up as a whole.
std::string Edit::result() {
  std::string printed = writtenText(document_, destination_->name());
  if (!options_.keepLayout) return printed;
  std::optional<std::string> kept;
  {
    const std::vector<char> original = file_.read();
    kept = keepLayout({original.data(), original.size() - 1}, printed);
  }
  std::string reason = "the changes do not fit into it";
  if (kept && makeWritable(*kept, reason) && means(document_, *kept, printed)) return *kept;
  reportNote(path_, "the layout is not kept: " + reason);
  return printed;
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
