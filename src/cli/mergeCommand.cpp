#include <filesystem>
#include <string>
#include <system_error>

#include "HostLog.hpp"
#include "commands.hpp"
#include "documentFile.hpp"
#include "editor/TarnMerge.hpp"
#include "model/LibTarnCmData.hpp"
#include "model/exceptions/ModelException.hpp"
#include "outputFile.hpp"

namespace tarn {

using libtarn::editor::TarnMerge;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using Operation = LibTarnManagedObject::Operation;

namespace {

void load(const std::string& path, LibTarnDocument& document, bool validate) {
  if (validate) {
    loadValidDocument(path, document);
  } else {
    loadDocument(path, document);
  }
}

// A delta that was merged has one of the three operations in each object.
std::string summary(const LibTarnDocument& delta) {
  std::size_t created = 0;
  std::size_t updated = 0;
  std::size_t deleted = 0;
  for (const LibTarnManagedObject* object : delta.getLibTarnCmData()->getLibTarnManagedObjects()) {
    const Operation operation = object->getOperation();
    ++(operation == Operation::CREATE   ? created
       : operation == Operation::DELETE ? deleted
                                        : updated);
  }
  return std::to_string(created) + " created, " + std::to_string(updated) + " updated, " +
         std::to_string(deleted) + " deleted";
}

// Why the library refused is in its log only.
[[noreturn]] void throwRefusal(const MergeRequest& request, const std::string& deltaPath,
                               const LibTarnDocument& source, const LibTarnDocument& delta) {
  const std::string reason = HostLog::takeError();
  if (!source.getLibTarnCmData()) {
    throw CommandError(Status::RuleBroken, request.source, reason);
  }
  throw CommandError(delta.getLibTarnCmData() ? Status::Conflict : Status::RuleBroken, deltaPath,
                     reason);
}

// Two documents of one file would be merged, but no user means that.
void refuseSameFile(const std::string& source, const std::string& delta) {
  std::error_code ignored;
  if (std::filesystem::equivalent(source, delta, ignored)) {
    throw CommandError(Status::Conflict, delta, "Source and delta are the same document");
  }
}

// Returns what the delta did, as a line.
std::string applyDelta(const MergeRequest& request, const std::string& path,
                       LibTarnDocument& source) {
  refuseSameFile(request.source, path);
  LibTarnDocument delta(libtarn::model::OutOfMemory::Throw);
  load(path, delta, request.validate);
  try {
    if (!TarnMerge(source).mergeDocument(delta)) throwRefusal(request, path, source, delta);
  } catch (const libtarn::model::exceptions::ModelException& error) {
    throw CommandError(Status::RuleBroken, path, error.what());
  }
  return path + ": " + summary(delta) + "\n";
}

}  // namespace

void mergeCommand(const MergeRequest& request) {
  LibTarnDocument source(libtarn::model::OutOfMemory::Throw);
  load(request.source, source, request.validate);
  std::string summaries;
  for (const std::string& path : request.deltas) summaries += applyDelta(request, path, source);
  if (request.validate && source.validate() != 0) {
    HostLog::takeError();
    throw CommandError(Status::RuleBroken, request.source,
                       "merged document: " + source.getDiagnostic().message);
  }
  if (request.checkOnly) return writeOutput(summaries);
  writeResult(source, request.source, request.target, summaries);
}

}  // namespace tarn
