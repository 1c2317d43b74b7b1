#include "documents/VisitedFile.hpp"

#include "documents/walkObjects.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

void VisitedFile::visitObjects(const Visit& visit, const std::function<void()>& restart) {
  text_ = file_.read();
  if (libtarn::model::LibTarnDocument::visitObjects(text_, visit)) return;
  restart();
  text_ = {};
  loadDocument(file_, document_.emplace());
  for (const LibTarnManagedObject* object = firstObject(*document_); object;
       object = object->getNextSiblingElement()) {
    visit(*object);
  }
}

}  // namespace tarn
