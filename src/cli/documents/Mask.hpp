#pragma once

#include <string>

#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// In a mask, matches any class, version or value; among new values, means no change.
constexpr const char* ANY_TEXT = "#";
/// In a mask, matches any distinguished name; among new values, means no change.
constexpr const char* ANY_NAME = "_-_";

/// The first managed object of a document of its own: a mask that selects objects, or the new
/// values of objects.
class Mask {
 public:
  /// Loads the document at `path`. Throws CommandError, also when it holds no managed object.
  explicit Mask(const std::string& path);

  libtarn::model::LibTarnManagedObject& object() const { return *object_; }

 private:
  Document document_;
  libtarn::model::LibTarnManagedObject* object_;
};

}  // namespace tarn
