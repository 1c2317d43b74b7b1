#include "libtarn/util/DocumentList.hpp"

namespace libtarn {
namespace util {

void DocumentList::SaveDocument(model::LibTarnDocument* document) {
  documents_.push_back(document);
  if (documents_.size() > capacity_) documents_.pop_front();
}

model::LibTarnDocument* DocumentList::GetDocumentBack() {
  if (documents_.empty()) return nullptr;
  model::LibTarnDocument* const document = documents_.back();
  documents_.pop_back();
  return document;
}

}  // namespace util
}  // namespace libtarn
