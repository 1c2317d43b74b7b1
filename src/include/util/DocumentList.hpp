#pragma once

#include <list>

#include "libtarn/TarnApi.hpp"

namespace libtarn {

namespace model {
class LibTarnDocument;
}

namespace util {

/// The documents that a host saved last, up to a fixed number, returned newest first.
///
/// Keeps pointers only: it never makes, copies or deletes a document. A host that wants to delete
/// the documents that the list drops keeps track of them itself. Used by one thread at a time.
class TARN_API DocumentList {
 public:
  /// Keeps three documents.
  DocumentList() = default;
  /// Keeps `capacity` documents; with 0, none.
  explicit DocumentList(unsigned int capacity) : capacity_(capacity) {}
  virtual ~DocumentList() = default;

  /// Appends `document`, even when it is in the list already. Drops the oldest entry when there are
  /// more than the capacity.
  void SaveDocument(model::LibTarnDocument* document);
  /// Removes the newest entry and returns it; null when the list is empty.
  model::LibTarnDocument* GetDocumentBack();

 private:
  std::list<model::LibTarnDocument*> documents_;  // oldest first
  unsigned int capacity_ = 3;
};

}  // namespace util
}  // namespace libtarn
