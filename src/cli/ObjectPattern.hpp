#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/LibTarnDocument.hpp"
#include "model/LibTarnManagedObject.hpp"

namespace tarn {

/// What a user says of the managed objects that are meant, or of what they are to become.
struct PatternOptions {
  std::string className = "#";          ///< "#" for any, or for no change.
  std::string distName = "_-_";         ///< Part of the name; "_-_" for any.
  std::string version = "#";            ///< "#" for any, or for no change.
  std::string operation;                ///< "" for any.
  std::vector<std::string> parameters;  ///< "NAME=VALUE" each, in a mask also "NAME".
  std::string file;                     ///< A document whose first object is the pattern; "": none.

  /// Whether every object matches.
  bool saysNothing() const;
};

/// A managed object that stands for others, in a document of its own. Throws CommandError.
class ObjectPattern {
 public:
  /// An object to select by.
  static ObjectPattern mask(const PatternOptions& options);
  /// An object that says what changes; its parameters must have values.
  static ObjectPattern values(const PatternOptions& options);

  const libtarn::model::LibTarnManagedObject& object() const { return *object_; }

 private:
  ObjectPattern()
      : document_(
            std::make_unique<libtarn::model::LibTarnDocument>(libtarn::model::OutOfMemory::Throw)) {
  }
  void load(const std::string& path);
  void build(const PatternOptions& options, const char* valueOfBareName);

  std::unique_ptr<libtarn::model::LibTarnDocument> document_;
  const libtarn::model::LibTarnManagedObject* object_ = nullptr;
};

/// The objects of the file at `path`, loaded into `document`, that match, in the order of their
/// names. Throws CommandError, also when there are none.
std::vector<libtarn::model::LibTarnManagedObject*> loadMatching(
    const std::string& path, const PatternOptions& mask, libtarn::model::LibTarnDocument& document);

}  // namespace tarn
