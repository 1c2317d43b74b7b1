#pragma once

#include <string>

#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

struct Changes;
struct Selection;

/// In a mask, matches any class, version or value; among new values, means no change.
constexpr const char* ANY_TEXT = "#";
/// In a mask, matches any distinguished name.
constexpr const char* ANY_NAME = "_-_";

/// A mask, or the new values for the objects that a mask matches, as a managed object in a document
/// of its own. Throws CommandError.
class ObjectPattern {
 public:
  /// Makes the mask of a selection.
  explicit ObjectPattern(const Selection& selection);
  /// Makes the object with the new values.
  explicit ObjectPattern(const Changes& changes);

  const libtarn::model::LibTarnManagedObject& object() const { return object_; }

 private:
  const libtarn::model::LibTarnManagedObject& load(const std::string& path);
  const libtarn::model::LibTarnManagedObject& build(const Selection& selection);
  const libtarn::model::LibTarnManagedObject& build(const Changes& changes);

  Document document_;
  const libtarn::model::LibTarnManagedObject& object_;
};

}  // namespace tarn
