#include <fmt/format.h>

#include <string>
#include <string_view>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Edit.hpp"
#include "documents/orphans.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "output/counted.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

struct RemoveRequest {
  std::string file;
  std::vector<std::string> distNames;
  Selection selection;
  bool recursive = false;  ///< Removes what is below the objects, too.
  EditOptions edit;
};

// The names given as arguments are exact names like those of --dn.
Selection selectionOf(const RemoveRequest& request) {
  Selection selection = request.selection;
  selection.distNames.insert(selection.distNames.end(), request.distNames.begin(),
                             request.distNames.end());
  return selection;
}

std::string_view nameOf(const LibTarnManagedObject& object) {
  return textOrEmpty(object.getDistName().getText());
}

std::vector<std::string_view> namesOf(const Selector::Objects& objects) {
  std::vector<std::string_view> names;
  names.reserve(objects.size());
  for (const LibTarnManagedObject* object : objects) names.push_back(nameOf(*object));
  return names;
}

// A list of few objects names them, so that a user sees what has gone.
// A dry run has listed all of them.
std::string reportOf(const std::string& path, const Selector::Objects& objects, bool isDryRun) {
  constexpr std::size_t MOST_NAMED = 20;
  if (isDryRun || objects.size() > MOST_NAMED) {
    return fmt::format("{}: {} removed\n", printable(path), counted(objects.size(), "object"));
  }
  std::string report;
  for (const LibTarnManagedObject* object : objects) {
    report += printable(nameOf(*object)) + ": removed\n";
  }
  return report;
}

Status removeObjects(const RemoveRequest& request) {
  const Selection selection = selectionOf(request);
  requireSelection(selection, request.edit);
  Selector selector(selection);
  Edit edit(request.file, request.edit);
  Selector::Objects objects = edit.select(selector);
  const Selector::Objects below = objectsBelow(edit.document(), namesOf(objects));
  if (request.recursive) {
    objects.insert(objects.end(), below.begin(), below.end());
  } else if (!below.empty()) {
    reportNote(request.file,
               fmt::format("{}; --recursive removes {} too", withoutParent(below.size()),
                           below.size() == 1 ? "it" : "them"));
  }
  edit.confirm(objects.size());
  sortByName(objects, NameOrder::Natural);
  const std::string report = reportOf(request.file, objects, edit.isDryRun());
  for (const LibTarnManagedObject* object : objects) {
    edit.document().getLibTarnCmData()->removeLibTarnManagedObject(object->getDistName());
  }
  edit.finish(report);
  return Status::Done;
}

}  // namespace

void addRemove(CommandLine& line) {
  auto [options, request] =
      line.add<RemoveRequest>("remove", "Remove objects, all or none", removeObjects);
  addFile(options, request.file);
  options.addOptionalArguments("DN", request.distNames, "Distinguished names of objects");
  addSelectionForChange(options, request.selection, request.edit);
  options.addFlag("--recursive", request.recursive, "Remove what is below the objects, too");
  addEdit(options, request.edit);
}

}  // namespace tarn
