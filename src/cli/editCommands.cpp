// set, add, remove: commands that change the objects of one document.

#include <fmt/format.h>

#include <utility>

#include "HostLog.hpp"
#include "commands.hpp"
#include "model/LibTarnCmData.hpp"
#include "model/TarnDomElement.hpp"
#include "model/exceptions/ModelException.hpp"
#include "printable.hpp"
#include "terminal.hpp"
#include "util/TarnFactory.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::exceptions::ModelException;

namespace {

LibTarnCmData& cmDataOf(const LibTarnDocument& document, const std::string& path) {
  LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (!cmData) throw CommandError(Status::RuleBroken, path, "has no cmData");
  return *cmData;
}

/// What became of each object; the document is written only when all went right.
class Outcomes {
 public:
  explicit Outcomes(std::string path) : path_(std::move(path)) {}

  void done(const std::string& distName, const char* what) {
    report_ += fmt::format("{}: {}\n", printable(distName), what);
  }
  void failed(Status status, const std::string& distName, const std::string& message) {
    failures_.emplace_back(status, subjectOf(path_, distName), message);
  }
  /// Throws the last failure, when there is one, and tells those before it.
  void throwIfFailed() const {
    if (failures_.empty()) return;
    for (std::size_t i = 0; i + 1 < failures_.size(); ++i) tellError(failures_[i].what());
    throw CommandError(failures_.back());
  }
  const std::string& report() const { return report_; }

 private:
  std::string path_;
  std::string report_;
  std::vector<CommandError> failures_;
};

std::string nameOf(const LibTarnManagedObject& object) {
  const char* const text = object.getDistName().getText();
  return text ? text : "";
}

LibTarnManagedObject& copyInto(LibTarnDocument& document, const LibTarnManagedObject& object) {
  return dynamic_cast<LibTarnManagedObject&>(*object.clone(document.getFactory()));
}

}  // namespace

void setCommand(const std::string& path, const PatternOptions& mask, const PatternOptions& values,
                const Target& target) {
  const ObjectPattern maskPattern = ObjectPattern::mask(mask);
  const ObjectPattern valuesPattern = ObjectPattern::values(values);
  Destination destination(path, target);
  LibTarnDocument document(libtarn::model::OutOfMemory::Throw);
  loadDocument(path, document);
  const std::size_t count = document.getMOsMatchingMask(maskPattern.object()).size();
  if (count == 0) throw CommandError(Status::NothingMatched, path, "no object matches");
  HostLog::takeError();
  try {
    document.setChangesToMOs(maskPattern.object(), valuesPattern.object());
  } catch (const ModelException& error) {
    throw CommandError(Status::RuleBroken, path, error.what());
  }
  // The library says in its log only that an object could not keep its place among the names.
  if (!HostLog::takeError().empty()) {
    throw CommandError(Status::Conflict, path, "two objects would have one name");
  }
  writeResult(document, destination,
              fmt::format("{}: {} {} matched\n", printable(path), count,
                          count == 1 ? "object" : "objects"));
}

void addCommand(const std::string& path, const std::string& objectPath, const Target& target) {
  Destination destination(path, target);
  LibTarnDocument document(libtarn::model::OutOfMemory::Throw);
  loadDocument(path, document);
  LibTarnDocument objects(libtarn::model::OutOfMemory::Throw);
  loadDocument(objectPath, objects);
  LibTarnCmData& cmData = cmDataOf(document, path);
  Outcomes outcomes(path);
  for (const LibTarnManagedObject* object :
       cmDataOf(objects, objectPath).getLibTarnManagedObjects()) {
    const std::string distName = nameOf(*object);
    if (cmData.hasLibTarnManagedObject(distName.c_str())) {
      outcomes.failed(Status::Conflict, distName, "there is an object of that name");
      continue;
    }
    try {
      cmData.addLibTarnManagedObject(copyInto(document, *object));
      outcomes.done(distName, "added");
    } catch (const ModelException& error) {
      outcomes.failed(Status::RuleBroken, distName, error.what());
    }
  }
  outcomes.throwIfFailed();
  writeResult(document, destination, outcomes.report());
}

void removeCommand(const std::string& path, const std::vector<std::string>& distNames,
                   const Target& target) {
  Destination destination(path, target);
  LibTarnDocument document(libtarn::model::OutOfMemory::Throw);
  loadDocument(path, document);
  LibTarnCmData& cmData = cmDataOf(document, path);
  Outcomes outcomes(path);
  for (const std::string& distName : distNames) {
    if (cmData.removeLibTarnManagedObject(distName.c_str()) == 0) {
      outcomes.done(distName, "removed");
    } else {
      outcomes.failed(Status::NothingMatched, distName, "no such object");
    }
  }
  outcomes.throwIfFailed();
  writeResult(document, destination, outcomes.report());
}

}  // namespace tarn
