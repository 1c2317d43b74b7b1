#include "documents/PlannedMerge.hpp"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>

#include "libtarn/editor/TarnMerge.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "output/HostLog.hpp"
#include "output/Progress.hpp"
#include "output/terminal.hpp"

namespace tarn {

using libtarn::editor::TarnMerge;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::exceptions::ModelException;
using Conflict = PlannedMerge::Plan::Conflict;

namespace {

// Entries of a plan are in the order of the deltas.
template <class Entry>
std::vector<Entry> entriesOf(std::size_t delta, const std::vector<Entry>& entries) {
  const auto begin =
      std::lower_bound(entries.begin(), entries.end(), delta,
                       [](const Entry& entry, std::size_t number) { return entry.delta < number; });
  const auto end =
      std::upper_bound(begin, entries.end(), delta,
                       [](std::size_t number, const Entry& entry) { return number < entry.delta; });
  return {begin, end};
}

/// Reports errors, and throws the last one.
class Errors {
 public:
  explicit Errors(Status status) : status_(status) {}

  void add(const std::string& subject, const std::string& message) {
    if (last_) reportError(last_->what());
    last_.emplace(status_, subject, message);
  }
  [[noreturn]] void throwLast() const { throw CommandError(*last_); }

 private:
  Status status_;
  std::optional<CommandError> last_;
};

}  // namespace

void refuseSameFile(const std::string& source, const std::string& delta) {
  std::error_code ignored;
  if (std::filesystem::equivalent(source, delta, ignored)) {
    throw CommandError(Status::Conflict, delta, "Source and delta are the same document");
  }
}

PlannedMerge::PlannedMerge(MergeFiles& files, Rules rules) : files_(files) {
  files_.source.load(source_, rules);
  loadDeltas(rules);
  const Progress progress("Planning", files_.source.path());
  std::vector<libtarn::model::LibTarnDocument*> deltas;
  for (const auto& delta : deltas_) deltas.push_back(delta.get());
  plan_.emplace(source_, std::move(deltas));
}

void PlannedMerge::loadDeltas(Rules rules) {
  try {
    for (RereadFile& file : files_.deltas) {
      refuseSameFile(files_.source.path(), file.path());
      auto delta = std::make_unique<Document>();
      file.load(*delta, rules);
      deltas_.push_back(std::move(delta));
    }
  } catch (const CommandError& failure) {
    failure_ = failure;
  }
}

// The plan does not say whether a conflict is a rule that a copy would break.
Status PlannedMerge::refusalStatus() {
  if (!source_.getLibTarnCmData()) return Status::RuleBroken;
  Status status = Status::Done;
  try {
    for (const auto& delta : deltas_) {
      TarnMerge merge(source_);
      if (merge.mergeDocument(*delta)) continue;
      status = delta->getLibTarnCmData() ? Status::Conflict : Status::RuleBroken;
      break;
    }
  } catch (const ModelException&) {
    status = Status::RuleBroken;
  }
  HostLog::takeError();
  return status;
}

// In the order of the text.
std::vector<Conflict> PlannedMerge::conflictsOf(std::size_t number) const {
  std::vector<Conflict> conflicts = entriesOf(number, plan_->getConflicts());
  const Document& delta = *deltas_[number];
  std::sort(conflicts.begin(), conflicts.end(), [&delta](const Conflict& a, const Conflict& b) {
    if (!a.object || !b.object) return !a.object && b.object;
    return delta.getTextOffset(*a.object) < delta.getTextOffset(*b.object);
  });
  return conflicts;
}

void PlannedMerge::throwRefusals(Status status) {
  if (failure_) {
    if (plan_->getConflicts().empty()) throw CommandError(*failure_);
    reportError(failure_->what());
    status = std::max(status, failure_->status());
  }
  Errors errors(status);
  if (!source_.getLibTarnCmData()) {
    errors.add(files_.source.path(), plan_->getConflicts().front().reason);
    errors.throwLast();
  }
  auto file = files_.deltas.begin();
  for (std::size_t number = 0; number < deltas_.size(); ++number, ++file) {
    const std::vector<Conflict> conflicts = conflictsOf(number);
    std::vector<const LibTarnManagedObject*> objects;
    for (const Conflict& conflict : conflicts) {
      if (conflict.object) objects.push_back(conflict.object);
    }
    const std::vector<std::string> subjects = file->subjectsOf(*deltas_[number], objects);
    const std::size_t ofDocument = conflicts.size() - objects.size();
    for (std::size_t i = 0; i < conflicts.size(); ++i) {
      errors.add(i < ofDocument ? file->path() : subjects[i - ofDocument], conflicts[i].reason);
    }
  }
  errors.throwLast();
}

void PlannedMerge::apply() {
  const Progress progress("Merging", files_.source.path());
  if (plan_->apply()) return;
  HostLog::takeError();
  throw CommandError(Status::Conflict, files_.source.path(), plan_->getDiagnostic().message);
}

std::vector<PlannedMerge::Plan::Omission> PlannedMerge::omissionsOf(std::size_t number) const {
  return entriesOf(number, plan_->getOmissions());
}

}  // namespace tarn
