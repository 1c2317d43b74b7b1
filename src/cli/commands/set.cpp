#include <fmt/format.h>

#include <cstddef>
#include <string>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Changes.hpp"
#include "documents/ObjectPattern.hpp"
#include "documents/Selection.hpp"
#include "documents/documentFile.hpp"
#include "documents/writtenText.hpp"
#include "libtarn/model/RefusedChange.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "output/HostLog.hpp"
#include "output/printable.hpp"

namespace tarn {

using libtarn::model::ChangeResult;
using libtarn::model::RefusedChange;

namespace {

struct SetRequest {
  std::string file;
  Selection selection;
  Changes changes;
  Target target;
};

void change(Document& document, const ObjectPattern& mask, const ObjectPattern& values,
            const std::string& path) {
  std::vector<RefusedChange> refused;
  document.tryChangesToMOs(mask.object(), values.object(), &refused);
  bool isNameTaken = false;
  for (const RefusedChange& each : refused) {
    if (each.reason.code == ChangeResult::BrokenRule) {
      throw CommandError(Status::RuleBroken, path, each.reason.message);
    }
    isNameTaken = isNameTaken || each.reason.code == ChangeResult::NameTaken;
  }
  if (!isNameTaken) return;
  HostLog::takeError();  // what the refusal says, too
  throw CommandError(Status::Conflict, path, "two objects would have one name");
}

void requireXmlTexts(const Changes& changes) {
  requireXmlText(changes.className);
  requireXmlText(changes.version);
  for (const std::string& parameter : changes.parameters) requireXmlText(parameter);
}

Status setValues(const SetRequest& request) {
  requireXmlTexts(request.changes);
  const ObjectPattern mask(request.selection);
  const ObjectPattern values(request.changes);
  Destination destination(request.file, request.target);
  Document document(request.file);
  const std::size_t count = document.getMOsMatchingMask(mask.object()).size();
  requireSelected(request.file, count);
  change(document, mask, values, request.file);
  writeResult(document, destination,
              fmt::format("{}: {} {} matched\n", printable(request.file), count,
                          count == 1 ? "object" : "objects"));
  return Status::Done;
}

void addChanges(Options& options, Changes& changes) {
  options.addText("--class", "C", changes.className, "The new class");
  options.addText("--version", "V", changes.version, "The new version");
  options.addTexts("--p", "NAME=VALUE", changes.parameters, "A new value; may be repeated");
  options.addText("--values", "FILE", changes.file,
                  "The new values: the first object of this document");
  for (const char* const part : {"--class", "--version", "--p"}) options.exclude("--values", part);
}

}  // namespace

void addSet(CommandLine& line) {
  auto [options, request] = line.add<SetRequest>(
      "set", "Change the objects that match; --class, --version and --p are the new values",
      setValues);
  addFile(options, request.file);
  addSelection(options, "mask-", request.selection);
  addChanges(options, request.changes);
  addTarget(options, request.target);
}

}  // namespace tarn
