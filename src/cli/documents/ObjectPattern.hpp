#pragma once

#include <string>

#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

struct Changes;
struct Selection;

/// In a pattern, a class, version or value that stands for any; as a new one, for no change.
constexpr const char* ANY_TEXT = "#";
/// In a pattern, a distinguished name that stands for any.
constexpr const char* ANY_NAME = "_-_";

/// A managed object that stands for others, in a document of its own. Throws CommandError.
class ObjectPattern {
 public:
  /// The object that selected ones match.
  explicit ObjectPattern(const Selection& selection);
  /// The object that holds the new values.
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
