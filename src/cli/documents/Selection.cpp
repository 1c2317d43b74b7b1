#include "documents/Selection.hpp"

#include "CommandError.hpp"
#include "libtarn/model/LibTarnCmData.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;

bool Selection::isEverything() const {
  const Selection everything;
  return className == everything.className && distName == everything.distName &&
         version == everything.version && operation.empty() && parameters.empty() && file.empty();
}

// Without a condition nothing is compared: the comparisons would cost more than the rest.
std::vector<LibTarnManagedObject*> loadSelected(const std::string& path, const Selection& selection,
                                                Document& document) {
  const ObjectPattern pattern(selection);
  loadDocument(path, document);
  std::vector<LibTarnManagedObject*> objects;
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (cmData && selection.isEverything()) {
    const auto all = cmData->getLibTarnManagedObjects();
    objects.assign(all.begin(), all.end());
  } else {
    const auto matching = document.getMOsMatchingMask(pattern.object());
    objects.assign(matching.begin(), matching.end());
  }
  requireSelected(path, objects.size());
  return objects;
}

void requireSelected(const std::string& path, std::size_t count) {
  if (count == 0) throw CommandError(Status::NothingMatched, path, "no object matches");
}

}  // namespace tarn
