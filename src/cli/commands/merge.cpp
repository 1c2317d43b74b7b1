#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/MergeNotes.hpp"
#include "documents/PlannedMerge.hpp"
#include "documents/RereadFile.hpp"
#include "documents/documentFile.hpp"
#include "files/InputFile.hpp"
#include "libtarn/editor/TarnMerge.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "output/HostLog.hpp"
#include "output/LineWriter.hpp"
#include "output/Progress.hpp"
#include "output/outputFile.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"
#include "text/naturalOrder.hpp"
#include "textOrEmpty.hpp"

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
  DryRun dryRun;
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

std::string summaryLine(const std::string& path, const Document& delta) {
  return printable(path) + ": " + summary(delta) + "\n";
}

/// Thrown for a delta that does not fit.
struct Refusal {
  CommandError error;
};

// The reason that the library gives is empty when there was no memory for it.
[[noreturn]] void throwRefusal(const MergeRequest& request, const std::string& deltaPath,
                               const Document& source, const Document& delta,
                               const std::string& reason) {
  HostLog::takeError();  // which says the same
  if (reason.empty()) throw std::bad_alloc();
  if (!source.getLibTarnCmData()) {
    throw Refusal{CommandError(Status::RuleBroken, request.source, reason)};
  }
  throw Refusal{CommandError(delta.getLibTarnCmData() ? Status::Conflict : Status::RuleBroken,
                             deltaPath, reason)};
}

/// What a delta did.
struct Applied {
  std::string summary;      // a line
  bool hasAbbreviatedTags;  // in what it brought
};

void mergeInto(const MergeRequest& request, const std::string& path, Document& source,
               Document& delta) {
  const Progress progress("Merging", path);
  try {
    TarnMerge merge(source);
    if (!merge.mergeDocument(delta)) {
      throwRefusal(request, path, source, delta, merge.getDiagnostic().message);
    }
  } catch (const libtarn::model::exceptions::ModelException& error) {
    throw Refusal{CommandError(Status::RuleBroken, path, error.what())};
  }
}

Applied applyDelta(const MergeRequest& request, RereadFile& file, Document& source,
                   MergeNotes& notes) {
  refuseSameFile(request.source, file.path());
  Document delta;
  file.load(delta, rulesOf(request));
  mergeInto(request, file.path(), source, delta);
  notes.add(delta, file, omissionsOf(delta, source));
  return {summaryLine(file.path(), delta), delta.hasAbbreviatedTags()};
}

void validateMerged(const MergeRequest& request, Document& merged) {
  const Progress progress("Validating", request.source);
  if (merged.validate() == 0) return;
  HostLog::takeError();
  const std::string message = "merged document: " + merged.getDiagnostic().message;
  if (request.validate) throw CommandError(Status::RuleBroken, request.source, message);
  reportNote(request.source, message);
}

/// A merge that was applied to a source.
struct Merged {
  std::string summaries;
  bool mayHaveBecomeInvalid = false;
  MergeNotes notes;
};

void finishMerge(const MergeRequest& request, const Merged& merged, Document& source) {
  if (request.validate || merged.mayHaveBecomeInvalid) validateMerged(request, source);
  merged.notes.report(source);
}

// The deltas are in memory one at a time.
void mergeAndWrite(const MergeRequest& request, MergeFiles& files) {
  Destination destination(request.source, request.target);
  Document source;
  files.source.load(source, rulesOf(request));
  Merged merged;
  for (RereadFile& file : files.deltas) {
    const Applied applied = applyDelta(request, file, source, merged.notes);
    merged.summaries += applied.summary;
    merged.mayHaveBecomeInvalid = merged.mayHaveBecomeInvalid || applied.hasAbbreviatedTags;
  }
  finishMerge(request, merged, source);
  writeResult(source, destination, merged.summaries);
}

// Loads everything again: earlier deltas have changed the source. What was refused is reported in
// any case.
[[noreturn]] void throwAllRefusals(const MergeRequest& request, MergeFiles& files,
                                   const Refusal& refusal) {
  try {
    PlannedMerge planned(files, rulesOf(request));
    if (planned.isRefused()) planned.throwRefusals(refusal.error.status());
  } catch (const std::bad_alloc&) {
    HostLog::drop();
  }
  throw CommandError(refusal.error);
}

struct Step {
  std::string_view name;
  Operation operation;
};

const char* wordFor(const Operation& operation) {
  if (operation == Operation::CREATE) return "created";
  return operation == Operation::DELETE ? "deleted" : "updated";
}

// A line for each name, with what each delta does to it.
void writeSteps(const std::vector<std::unique_ptr<Document>>& deltas) {
  std::vector<Step> steps;
  for (const auto& delta : deltas) {
    for (const LibTarnManagedObject* object :
         delta->getLibTarnCmData()->getLibTarnManagedObjects()) {
      steps.push_back({textOrEmpty(object->getDistName().getText()), object->getOperation()});
    }
  }
  std::stable_sort(steps.begin(), steps.end(),
                   [](const Step& a, const Step& b) { return isNaturallyBefore(a.name, b.name); });
  LineWriter writer;
  for (std::size_t i = 0; i < steps.size(); ++i) {
    const bool isFirst = i == 0 || steps[i].name != steps[i - 1].name;
    if (isFirst && i > 0) writer.endLine();
    writer.lines() += isFirst ? printable(steps[i].name) + ": " : ", ";
    writer.lines() += wordFor(steps[i].operation);
  }
  if (!steps.empty()) writer.endLine();
  writer.flush();
}

// All is done but for the writing of the result.
void showMerge(const MergeRequest& request, MergeFiles& files) {
  PlannedMerge planned(files, rulesOf(request));
  if (planned.isRefused()) planned.throwRefusals(planned.refusalStatus());
  planned.apply();
  Merged merged;
  auto file = files.deltas.begin();
  for (std::size_t i = 0; i < planned.deltas().size(); ++i, ++file) {
    const Document& delta = *planned.deltas()[i];
    merged.summaries += summaryLine(file->path(), delta);
    merged.mayHaveBecomeInvalid = merged.mayHaveBecomeInvalid || delta.hasAbbreviatedTags();
    merged.notes.add(delta, *file, planned.omissionsOf(i));
  }
  finishMerge(request, merged, planned.source());
  if (request.dryRun.isAsked) {
    return finishDryRun(planned.source(), request.target, request.dryRun,
                        {request.source, merged.summaries, false, planned.plan().getDifferences()});
  }
  writeSteps(planned.deltas());
  writeOutput(merged.summaries);
}

Status mergeDeltas(const MergeRequest& request) {
  std::vector<std::string> inputs = request.deltas;
  inputs.push_back(request.source);
  requireOneStandardInput(inputs);
  MergeFiles files(request.source, request.deltas);
  if (request.checkOnly || request.dryRun.isAsked) {
    showMerge(request, files);
    return Status::Done;
  }
  try {
    mergeAndWrite(request, files);
  } catch (const Refusal& refusal) {
    throwAllRefusals(request, files, refusal);
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
  addDryRun(options, request.dryRun);
  options.addFlag("--check-only", request.checkOnly, "List what would happen and write nothing");
  for (const char* const other : {"--output", "--in-place", "--dry-run"}) {
    options.exclude("--check-only", other);
  }
  options.addFlag("--validate", request.validate, "Validate source, deltas and result");
}

}  // namespace tarn
