#pragma once

#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "CommandError.hpp"
#include "documents/RereadFile.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/editor/TarnPlan.hpp"

namespace tarn {

/// The files of a merge.
struct MergeFiles {
  MergeFiles(const std::string& sourcePath, const std::vector<std::string>& deltaPaths)
      : source(sourcePath) {
    for (const std::string& path : deltaPaths) deltas.emplace_back(path);
  }

  RereadFile source;
  std::list<RereadFile> deltas;
};

/// Throws CommandError when `delta` is the file `source` under any name: no user means that.
void refuseSameFile(const std::string& source, const std::string& delta);

/// A merge that is planned with all its deltas in memory, to know all conflicts or all changes.
class PlannedMerge {
 public:
  using Plan = libtarn::editor::TarnPlan;

  /// Loads the files and plans the merge. When a delta cannot be loaded, those before it are
  /// planned. Throws CommandError when the source cannot be loaded.
  PlannedMerge(MergeFiles& files, Rules rules);

  bool isRefused() const { return failure_ || !plan_->getConflicts().empty(); }
  /// The status that a merge of one delta after the other ends with. Changes the documents.
  Status refusalStatus();
  /// Reports every conflict and the fault of a delta that could not be loaded. Throws the last one,
  /// with the highest of `status` and that of the fault.
  [[noreturn]] void throwRefusals(Status status);

  /// Merges. Afterwards the plan can still be read.
  void apply();

  Document& source() { return source_; }
  const std::vector<std::unique_ptr<Document>>& deltas() const { return deltas_; }
  const Plan& plan() const { return *plan_; }
  /// What the merge leaves out of the delta `number`.
  std::vector<Plan::Omission> omissionsOf(std::size_t number) const;

 private:
  void loadDeltas(Rules rules);
  std::vector<Plan::Conflict> conflictsOf(std::size_t number) const;

  MergeFiles& files_;
  Document source_;
  std::vector<std::unique_ptr<Document>> deltas_;
  std::optional<CommandError> failure_;  // of the delta after these
  std::optional<Plan> plan_;
};

}  // namespace tarn
