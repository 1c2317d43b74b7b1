#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace libtarn {

namespace model {
class LibTarnDocument;
}

namespace util {

/// Makes a managed object that stands for others: a mask for match() and getMOsMatchingMask(), or
/// the values for change() and setChangesToMOs().
///
/// What is not set stands for anything in a mask and for no change in values: class and version
/// "#", distinguished name "_-_", no operation. The object is detached, belongs to the document and
/// lives as long. Texts are copied. One thread, together with the document.
///
///     const auto& mask =
///     ManagedObjectBuilder(document).setClass("CELL").setDistName("SITE-3").get();
class TARN_API ManagedObjectBuilder {
 public:
  /// Starts with an object of `document` that stands for anything.
  explicit ManagedObjectBuilder(model::LibTarnDocument& document);

  /// The class, exactly.
  ManagedObjectBuilder& setClass(const char* className);
  /// In a mask any part of a name; it need not be a valid name.
  ManagedObjectBuilder& setDistName(const char* distName);
  /// Version and operation, exactly.
  ManagedObjectBuilder& setVersion(const char* version);
  ManagedObjectBuilder& setOperation(model::LibTarnManagedObject::Operation operation);
  /// Adds a parameter; in a mask the value "#" stands for any. Returns false, with nothing changed,
  /// when there is one of that name.
  bool addParameter(const char* name, const char* value);

  /// The object, which is the document's.
  model::LibTarnManagedObject& get() const { return object_; }

 private:
  model::LibTarnDocument& document_;
  model::LibTarnManagedObject& object_;
};

}  // namespace util
}  // namespace libtarn
