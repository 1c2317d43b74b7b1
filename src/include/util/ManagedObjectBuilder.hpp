#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace libtarn {

namespace model {
class LibTarnDocument;
}

namespace util {

/// Builds a managed object that stands for others: a mask for match() and getMOsMatchingMask(), or
/// the values for change() and setChangesToMOs().
///
/// What is not set matches anything in a mask, and changes nothing in values: class and version
/// "#", distinguished name "_-_", no operation. The object is detached, belongs to the document and
/// lives as long as it. Texts are copied. Used by one thread at a time, together with the document.
///
///     const auto& mask =
///     ManagedObjectBuilder(document).setClass("CELL").setDistName("SITE-3").get();
class TARN_API ManagedObjectBuilder {
 public:
  /// Starts with an object of `document` that matches anything.
  explicit ManagedObjectBuilder(model::LibTarnDocument& document);

  /// Sets the class, which is compared exactly.
  ManagedObjectBuilder& setClass(const char* className);
  /// Sets the distinguished name: in a mask any part of a name, which need not be a valid name.
  ManagedObjectBuilder& setDistName(const char* distName);
  /// Sets the version, which is compared exactly.
  ManagedObjectBuilder& setVersion(const char* version);
  /// Sets the operation, which is compared exactly.
  ManagedObjectBuilder& setOperation(model::LibTarnManagedObject::Operation operation);
  /// Adds a parameter; in a mask the value "#" matches any. Returns false, with nothing changed,
  /// when there is one of that name.
  bool addParameter(const char* name, const char* value);

  /// Returns the object, which the document owns.
  model::LibTarnManagedObject& get() const { return object_; }

 private:
  model::LibTarnDocument& document_;
  model::LibTarnManagedObject& object_;
};

}  // namespace util
}  // namespace libtarn
