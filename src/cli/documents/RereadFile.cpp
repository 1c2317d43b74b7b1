#include "documents/RereadFile.hpp"

#include <cstddef>

#include "CommandError.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;
using libtarn::util::TextPosition;

void RereadFile::load(Document& document, Rules rules) {
  loadDocument(open(), document, rules);
  closeIfReopenable();
}

std::vector<std::string> RereadFile::subjectsOf(
    const Document& document, const std::vector<const LibTarnManagedObject*>& objects) {
  if (objects.empty()) return {};
  std::vector<std::size_t> offsets;
  offsets.reserve(objects.size());
  for (const LibTarnManagedObject* object : objects) {
    offsets.push_back(document.getTextOffset(*object));
  }
  const std::vector<TextPosition> places = open().locate(offsets);
  closeIfReopenable();
  std::vector<std::string> subjects;
  subjects.reserve(objects.size());
  for (std::size_t i = 0; i < objects.size(); ++i) {
    const std::string place = subjectAt(path_, places[i]);
    const std::string name = textOrEmpty(objects[i]->getDistName().getText());
    subjects.push_back(name.empty() ? place : subjectOf(place, name));
  }
  return subjects;
}

TextFile& RereadFile::open() { return file_ ? *file_ : file_.emplace(path_); }

void RereadFile::closeIfReopenable() {
  if (file_->isReopenable()) file_.reset();
}

}  // namespace tarn
