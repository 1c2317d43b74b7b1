#include <filesystem>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/documentFile.hpp"
#include "files/InputFile.hpp"
#include "libtarn/editor/TarnMerge.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "output/HostLog.hpp"
#include "output/Progress.hpp"
#include "output/outputFile.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

using libtarn::editor::TarnMerge;
using libtarn::model::LibTarnManagedObject;
using Operation = LibTarnManagedObject::Operation;

namespace {

struct MergeRequest {
  std::string source;
  std::vector<std::string> deltas;
  Target target;
  bool checkOnly = false;  ///< Nothing is written.
  bool validate = false;   ///< Source, deltas and result are validated.
};

Rules rulesOf(const MergeRequest& request) {
  return request.validate ? Rules::Checked : Rules::Unchecked;
}

// A delta that was merged has one of the three operations in each object.
std::string summary(const Document& delta) {
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

// The reason that the library gives is empty when there was no memory for it.
[[noreturn]] void throwRefusal(const MergeRequest& request, const std::string& deltaPath,
                               const Document& source, const Document& delta,
                               const std::string& reason) {
  HostLog::takeError();  // which says the same
  if (reason.empty()) throw std::bad_alloc();
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

/// What a delta did.
struct Applied {
  std::string summary;      // a line
  bool hasAbbreviatedTags;  // in what it brought
};

Applied applyDelta(const MergeRequest& request, const std::string& path, Document& source) {
  refuseSameFile(request.source, path);
  Document delta(path, rulesOf(request));
  const Progress progress("Merging", path);
  try {
    TarnMerge merge(source);
    if (!merge.mergeDocument(delta)) {
      throwRefusal(request, path, source, delta, merge.getDiagnostic().message);
    }
  } catch (const libtarn::model::exceptions::ModelException& error) {
    throw CommandError(Status::RuleBroken, path, error.what());
  }
  return {printable(path) + ": " + summary(delta) + "\n", delta.hasAbbreviatedTags()};
}

void validateMerged(const MergeRequest& request, Document& merged) {
  const Progress progress("Validating", request.source);
  if (merged.validate() == 0) return;
  HostLog::takeError();
  const std::string message = "merged document: " + merged.getDiagnostic().message;
  if (request.validate) throw CommandError(Status::RuleBroken, request.source, message);
  reportNote(request.source, message);
}

Status mergeDeltas(const MergeRequest& request) {
  std::vector<std::string> inputs = request.deltas;
  inputs.push_back(request.source);
  requireOneStandardInput(inputs);
  std::optional<Destination> destination;
  if (!request.checkOnly) destination.emplace(request.source, request.target);
  Document source(request.source, rulesOf(request));
  std::string summaries;
  bool mayHaveBecomeInvalid = false;
  for (const std::string& path : request.deltas) {
    const Applied applied = applyDelta(request, path, source);
    summaries += applied.summary;
    mayHaveBecomeInvalid = mayHaveBecomeInvalid || applied.hasAbbreviatedTags;
  }
  if (request.validate || mayHaveBecomeInvalid) validateMerged(request, source);
  if (destination) {
    writeResult(source, *destination, summaries);
  } else {
    writeOutput(summaries);
  }
  return Status::Done;
}

}  // namespace

void addMerge(CommandLine& line) {
  auto [options, request] =
      line.add<MergeRequest>("merge", "Apply deltas to a document, in their order", mergeDeltas);
  options.addArgument("SOURCE", request.source, "The document; - is standard input");
  options.addArguments("DELTA", request.deltas, "The deltas");
  addTarget(options, request.target);
  options.addFlag("--check-only", request.checkOnly, "Write nothing");
  options.addFlag("--validate", request.validate, "Validate source, deltas and result");
}

}  // namespace tarn
