#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "libtarn/TarnApi.hpp"
#include "libtarn/editor/Difference.hpp"
#include "libtarn/model/Diagnostic.hpp"

namespace libtarn {

namespace model {
class LibTarnCmDataImp;
class LibTarnDocument;
}  // namespace model

namespace editor {

/// What a merge of deltas, one after the other, would do to a source. Nothing is changed before
/// apply().
///
/// A source in which two objects have one name, which only a host can make, is refused as a whole.
///
/// The source and the deltas stay the caller's. They must outlive the plan and stay as they are
/// until apply(); source and deltas are different documents. While an operation runs, no other
/// thread may use one of them. Takes time and memory for the deltas, not for the source. Throws
/// std::bad_alloc without memory, with nothing changed.
class TARN_API TarnPlan {
 public:
  /// Why an object of a delta, or all of it, cannot be merged.
  struct Conflict {
    /// Position of the delta among the deltas, counted from 0.
    std::size_t delta;
    /// The object, of the delta; null when the reason is the document. With
    /// LibTarnDocument::getTextOffset() of the delta a host finds its place.
    const model::LibTarnManagedObject* object;
    /// Name of the object, "" when it has none.
    const char* distName;
    /// The message that the merge has for it. For an object whose copy breaks a rule of the model,
    /// the message of the ModelException.
    std::string reason;
  };

  /// What an object of a delta has and a merge leaves out: another class or version for an object
  /// that it updates.
  struct Omission {
    /// Position of the delta among the deltas, counted from 0.
    std::size_t delta;
    /// The object, of the delta.
    const model::LibTarnManagedObject* object;
    /// Name of the object, "" when it has none.
    const char* distName;
    /// Difference::Part::Class or Difference::Part::Version.
    Difference::Part part;
    /// The value that stays, null when there is none. It may be used as long as the plan.
    const char* kept;
    /// The value of the delta.
    const char* omitted;
  };

  /// Plans the merge of one delta.
  TarnPlan(model::LibTarnDocument& source, model::LibTarnDocument& delta);
  /// Plans the merge of `deltas`, none of them null (asserted), in their order.
  TarnPlan(model::LibTarnDocument& source, std::vector<model::LibTarnDocument*> deltas);
  TarnPlan(const TarnPlan&) = delete;
  TarnPlan& operator=(const TarnPlan&) = delete;
  ~TarnPlan();

  /// Returns all conflicts: by delta, then in byte order of the objects' names. An object that
  /// conflicts is left out, and later deltas are planned without it.
  const std::vector<Conflict>& getConflicts() const { return conflicts_; }
  /// Returns the differences that apply() would make, as TarnDiff returns those between the source
  /// before and after it. Of an object that is updated, both objects are the source's own; of one
  /// that is created, the new object is the delta's or a copy in the plan. They may be used as long
  /// as the plan, also after apply(), which leaves their texts readable.
  const std::vector<Difference>& getDifferences() const { return differences_; }
  /// Returns what the merge would leave out, in the order of conflicts.
  const std::vector<Omission>& getOmissions() const { return omissions_; }

  /// Merges all deltas, as TarnMerge::mergeDocument() does for one after the other. Returns true
  /// when done. Returns false, with nothing changed and the reason in the log at level ERROR, when
  /// there is a conflict, also one that the documents have only got since they were planned.
  ///
  /// Throws like TarnMerge::mergeDocument(); source and deltas are then unchanged, except that an
  /// object that one delta deletes and a later one creates is put back as the last of its class.
  bool apply();
  /// Returns why apply() returned false, as TarnMerge::getDiagnostic() does.
  const model::Diagnostic& getDiagnostic() const { return diagnostic_; }

 private:
  void plan();
  bool hasDistinctNames(const model::LibTarnCmDataImp& source);
  bool refuse(const std::string& reason);

  model::LibTarnDocument& source_;
  std::vector<model::LibTarnDocument*> deltas_;
  std::unique_ptr<model::LibTarnDocument> copies_;  // null while there are none
  std::vector<Conflict> conflicts_;
  std::vector<Difference> differences_;
  std::vector<Omission> omissions_;
  model::Diagnostic diagnostic_;
};

}  // namespace editor
}  // namespace libtarn
