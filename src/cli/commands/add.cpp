#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Edit.hpp"
#include "documents/RereadFile.hpp"
#include "documents/documentFile.hpp"
#include "files/InputFile.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "libtarn/util/TarnFactory.hpp"
#include "output/counted.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::exceptions::ModelException;

namespace {

struct AddRequest {
  std::string file;
  std::string objectFile;  ///< The document with the objects.
  EditOptions edit;
};

/// The objects that cannot be added.
class Refusals {
 public:
  Refusals(const Document& document, RereadFile& file) : document_(document), file_(file) {}

  void add(const LibTarnManagedObject& object, Status status, const std::string& message) {
    refusals_.push_back({document_.getTextOffset(object), &object, status, message});
  }

  /// If there are any, reports all but the last one, in the order of the text, and throws that.
  void throwIfAny() {
    if (refusals_.empty()) return;
    std::sort(refusals_.begin(), refusals_.end(),
              [](const Refusal& a, const Refusal& b) { return a.offset < b.offset; });
    std::vector<const LibTarnManagedObject*> objects;
    for (const Refusal& each : refusals_) objects.push_back(each.object);
    const std::vector<std::string> subjects = file_.subjectsOf(document_, objects);
    for (std::size_t i = 0; i + 1 < refusals_.size(); ++i) {
      reportError(errorLine(subjects[i], refusals_[i].message));
    }
    throw CommandError(refusals_.back().status, subjects.back(), refusals_.back().message);
  }

 private:
  struct Refusal {
    std::size_t offset;
    const LibTarnManagedObject* object;
    Status status;
    std::string message;
  };

  const Document& document_;
  RereadFile& file_;
  std::vector<Refusal> refusals_;
};

// One line for each object, or for a dry run, which lists them itself, their number.
std::string reportOf(const AddRequest& request, const std::vector<std::string>& added) {
  if (request.edit.dryRun.isAsked) {
    return printable(request.file) + ": " + counted(added.size(), "object") + " added\n";
  }
  std::string report;
  for (const std::string& distName : added) report += printable(distName) + ": added\n";
  return report;
}

Status addObjects(const AddRequest& request) {
  requireOneStandardInput({request.file, request.objectFile});
  Edit edit(request.file, request.edit);
  RereadFile file(request.objectFile);
  Document objects;
  file.load(objects, Rules::Unchecked);
  LibTarnCmData& cmData = requireCmData(edit.document(), request.file);
  Refusals refusals(objects, file);
  std::vector<std::string> added;
  for (const LibTarnManagedObject* object :
       requireCmData(objects, request.objectFile).getLibTarnManagedObjects()) {
    const std::string distName = textOrEmpty(object->getDistName().getText());
    if (cmData.hasLibTarnManagedObject(distName.c_str())) {
      refusals.add(*object, Status::Conflict, "there is an object of that name");
      continue;
    }
    try {
      cmData.addLibTarnManagedObject(*edit.document().getFactory().createCopy(*object));
      added.push_back(distName);
    } catch (const ModelException& error) {
      refusals.add(*object, Status::RuleBroken, error.what());
    }
  }
  refusals.throwIfAny();
  edit.finish(reportOf(request, added));
  return Status::Done;
}

}  // namespace

void addAdd(CommandLine& line) {
  auto [options, request] =
      line.add<AddRequest>("add", "Add the objects of another document, all or none", addObjects);
  addFile(options, request.file);
  options.addArgument("OBJECTFILE", request.objectFile, "The document with the objects");
  addTarget(options, request.edit.target);
  addDryRun(options, request.edit.dryRun);
}

}  // namespace tarn
