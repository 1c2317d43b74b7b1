#include "documents/MergeNotes.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "documents/orphans.hpp"
#include "documents/walkObjects.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "output/terminal.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::editor::Difference;
using libtarn::model::LibTarnManagedObject;
using Omission = MergeNotes::Omission;

namespace {

constexpr std::size_t MOST_NOTES = 10;

std::string messageFor(const Omission& omission) {
  const char* const what = omission.part == Difference::Part::Class ? "class" : "version";
  const std::string stays = omission.kept ? fmt::format("the {} stays '{}'", what, omission.kept)
                                          : fmt::format("the object stays without {}", what);
  return fmt::format("{}, '{}' in the delta is not taken over", stays, omission.omitted);
}

void addOmission(std::vector<Omission>& omissions, const LibTarnManagedObject& object,
                 Difference::Part part, const char* kept, const char* omitted) {
  if (!omitted || (kept && std::strcmp(kept, omitted) == 0)) return;
  omissions.push_back(
      {0, &object, textOrEmpty(object.getDistName().getText()), part, kept, omitted});
}

}  // namespace

void MergeNotes::add(const Document& delta, RereadFile& file, std::vector<Omission> omissions) {
  for (const LibTarnManagedObject* object = firstObject(delta); object;
       object = object->getNextSiblingElement()) {
    if (object->getOperation() == LibTarnManagedObject::Operation::DELETE) {
      deleted_.emplace_back(textOrEmpty(object->getDistName().getText()));
    }
  }
  std::stable_sort(omissions.begin(), omissions.end(),
                   [&delta](const Omission& a, const Omission& b) {
                     return delta.getTextOffset(*a.object) < delta.getTextOffset(*b.object);
                   });
  const std::size_t count = std::min(omissions.size(), MOST_NOTES - omissions_.size());
  leftOut_ += omissions.size() - count;
  if (count == 0) return;
  std::vector<const LibTarnManagedObject*> objects;
  for (std::size_t i = 0; i < count; ++i) objects.push_back(omissions[i].object);
  const std::vector<std::string> subjects = file.subjectsOf(delta, objects);
  for (std::size_t i = 0; i < count; ++i) {
    omissions_.push_back({subjects[i], messageFor(omissions[i])});
  }
}

void MergeNotes::report(const Document& merged) const {
  for (const Note& note : omissions_) reportNote(note.subject, note.message);
  if (leftOut_ > 0) {
    reportNote(merged.path(),
               leftOut_ == 1
                   ? "1 more class or version is not taken over"
                   : fmt::format("{} more classes and versions are not taken over", leftOut_));
  }
  // A later delta may have created the object again.
  std::vector<std::string_view> gone;
  for (const std::string& name : deleted_) {
    if (!merged.getLibTarnCmData()->hasLibTarnManagedObject(name.c_str())) gone.emplace_back(name);
  }
  const std::size_t orphans = objectsBelow(merged, gone).size();
  if (orphans > 0) reportNote(merged.path(), withoutParent(orphans));
}

// The merge has replaced "auto" in the delta.
std::vector<Omission> omissionsOf(const Document& delta, const Document& source) {
  std::vector<Omission> omissions;
  for (const LibTarnManagedObject* object = firstObject(delta); object;
       object = object->getNextSiblingElement()) {
    if (object->getOperation() != LibTarnManagedObject::Operation::UPDATE) continue;
    const LibTarnManagedObject* const updated =
        source.getLibTarnCmData()->getLibTarnManagedObject(object->getDistName());
    if (!updated) continue;
    addOmission(omissions, *object, Difference::Part::Class, updated->getClass(),
                object->getClass());
    addOmission(omissions, *object, Difference::Part::Version, updated->getVersion(),
                object->getVersion());
  }
  return omissions;
}

}  // namespace tarn
