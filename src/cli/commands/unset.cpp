#include <string>
#include <variant>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/ChangeCounts.hpp"
#include "documents/Edit.hpp"
#include "documents/ValuePath.hpp"
#include "documents/ValueText.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

struct UnsetRequest {
  std::string file;
  std::vector<std::string> names;
  Selection selection;
  EditOptions edit;
};

/// Removes values, or whole extensions, from objects.
class Remover {
 public:
  explicit Remover(const UnsetRequest& request) : path_(request.file), counts_(path_, "removed") {
    for (const std::string& name : request.names) {
      ValueText reader("NAME", name);
      const std::string path = reader.readName();
      if (!reader.isAtEnd()) reader.refuse("quote a name that holds one of = ! < > ~");
      for (const ValuePath& other : paths_) {
        if (other.text() == path) throwUsageError("'" + path + "' is named more than once");
      }
      paths_.emplace_back(path);
      counts_.addValue(path);
    }
  }

  // All places are found before the first removal, which moves what follows it in a list.
  void removeFrom(LibTarnManagedObject& object) {
    std::vector<ValuePath::Place> places;
    for (const ValuePath& path : paths_) places.push_back(path.find(object));
    counts_.beginObject();
    for (std::size_t i = 0; i < paths_.size(); ++i) {
      const bool isThere = !std::holds_alternative<std::monostate>(places[i]);
      if (isThere) {
        remove(object, paths_[i], places[i]);
      } else if (object.removeExtension(paths_[i].text()) != 0) {
        counts_.noteLacking(i);
        continue;
      }
      counts_.noteChanged();
    }
    counts_.endObject();
  }

  const ChangeCounts& counts() const { return counts_; }

 private:
  void remove(LibTarnManagedObject& object, const ValuePath& path,
              const ValuePath::Place& place) const {
    if (path.remove(object, place)) return;
    throw CommandError(Status::UsageError,
                       subjectOf(path_, textOrEmpty(object.getDistName().getText())),
                       "'" + path.text() + "' is part of an item, which is removed as a whole");
  }

  std::string path_;
  ChangeCounts counts_;
  std::vector<ValuePath> paths_;
};

Status unsetValues(const UnsetRequest& request) {
  requireSelection(request.selection, request.edit);
  Remover remover(request);
  Selector selector(request.selection);
  Edit edit(request.file, request.edit);
  const Selector::Objects objects = edit.select(selector);
  edit.confirm(objects.size());
  for (LibTarnManagedObject* object : objects) remover.removeFrom(*object);
  remover.counts().requireEachValue();
  edit.finish(remover.counts().report());
  return Status::Done;
}

}  // namespace

void addUnset(CommandLine& line) {
  auto [options, request] =
      line.add<UnsetRequest>("unset", "Remove values from the selected objects", unsetValues);
  addFile(options, request.file);
  options.addArguments("NAME", request.names,
                       "Parameters, lists, LIST[2], EXTENSION.NAME or extensions");
  addSelectionForChange(options, request.selection, request.edit);
  addEdit(options, request.edit);
}

}  // namespace tarn
