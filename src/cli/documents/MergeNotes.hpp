#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "documents/RereadFile.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/editor/TarnPlan.hpp"

namespace tarn {

/// What a user should know of a merge that is done: what deltas have and the merge leaves out, and
/// objects that stay without a parent.
class MergeNotes {
 public:
  using Omission = libtarn::editor::TarnPlan::Omission;

  /// Adds what `delta`, which was loaded from `file` and merged, has and the merge left out, and
  /// the names that it deleted.
  void add(const Document& delta, RereadFile& file, std::vector<Omission> omissions);
  /// Reports the notes, those on omissions up to a limit. `merged` is the source after the merge.
  void report(const Document& merged) const;

 private:
  std::vector<std::string> deleted_;
  struct Note {
    std::string subject;
    std::string message;
  };
  std::vector<Note> omissions_;
  std::size_t leftOut_ = 0;
};

/// Returns what the merge of `delta` into `source`, which is done, has left out.
std::vector<MergeNotes::Omission> omissionsOf(const Document& delta, const Document& source);

}  // namespace tarn
