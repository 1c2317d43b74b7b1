#include <string>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Changer.hpp"
#include "documents/Edit.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

struct SetRequest {
  std::string file;
  Selection selection;
  Changes changes;
  EditOptions edit;
};

Status setValues(const SetRequest& request) {
  if (request.changes.isEmpty()) {
    throwUsageError(
        "no change is given; --set NAME=VALUE, --set-class, --set-version and --values "
        "change, --p, --class and --version select");
  }
  requireSelection(request.selection, request.edit);
  Selector selector(request.selection);
  Changer changer(request.changes, selector, request.file);
  Edit edit(request.file, request.edit);
  const Selector::Objects objects = edit.select(selector);
  edit.confirm(objects.size());
  for (LibTarnManagedObject* object : objects) changer.change(*object, edit.document());
  changer.requireEachValue();
  edit.finish(changer.report());
  return Status::Done;
}

void addChanges(Options& options, Changes& changes) {
  options.addTexts("--set", "NAME=VALUE", changes.values,
                   "A new value; NAME as in tarn get: LIST[2].COMPONENT, EXTENSION.NAME");
  options.addOptionalText("--set-class", "C", changes.className, "The new class");
  options.addOptionalText("--set-version", "V", changes.version, "The new version");
  options.addText("--values", "FILE", changes.file,
                  "The new values: the first object of this document");
  for (const char* const other : {"--set", "--set-class", "--set-version"}) {
    options.exclude("--values", other);
  }
  options.addFlag("--create", changes.create, "Add parameters that an object does not have");
  options.addFlag("--only-existing", changes.onlyExisting,
                  "Change only what an object has; the default");
  options.exclude("--create", "--only-existing");
}

}  // namespace

void addSet(CommandLine& line) {
  auto [options, request] =
      line.add<SetRequest>("set", "Change values of the selected objects", setValues);
  addFile(options, request.file);
  addSelectionForChange(options, request.selection, request.edit);
  addChanges(options, request.changes);
  addEdit(options, request.edit);
  options.refuseFormer("--mask-class", "--class");
  options.refuseFormer("--mask-version", "--version");
  options.refuseFormer("--mask-p", "--p");
}

}  // namespace tarn
