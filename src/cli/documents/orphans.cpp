#include "documents/orphans.hpp"

#include <unordered_set>

#include "documents/walkObjects.hpp"
#include "output/counted.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

using Names = std::unordered_set<std::string_view>;

bool isBelow(std::string_view name, const Names& names) {
  for (std::size_t end = name.rfind('/'); end != std::string_view::npos && end > 0;
       end = name.rfind('/', end - 1)) {
    if (names.count(name.substr(0, end)) > 0) return true;
  }
  return false;
}

}  // namespace

Selector::Objects objectsBelow(const Document& document,
                               const std::vector<std::string_view>& names) {
  const Names above(names.begin(), names.end());
  Selector::Objects objects;
  if (above.empty()) return objects;
  for (LibTarnManagedObject* object = firstObject(document); object;
       object = object->getNextSiblingElement()) {
    const std::string_view name = textOrEmpty(object->getDistName().getText());
    if (above.count(name) == 0 && isBelow(name, above)) objects.push_back(object);
  }
  return objects;
}

std::string withoutParent(std::size_t count) {
  return counted(count, "object") + (count == 1 ? " stays" : " stay") + " without a parent";
}

}  // namespace tarn
