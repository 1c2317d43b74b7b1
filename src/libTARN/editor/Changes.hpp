#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "../model/TypedChildren.hpp"
#include "../model/UndoLog.hpp"
#include "libtarn/model/DistinguishedName.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace libtarn {

namespace model {
class LibTarnCmDataImp;
class LibTarnHeaderImp;
}  // namespace model

namespace util {
class TarnFactory;
}

namespace editor {

constexpr const char* SAME_DOCUMENT_MESSAGE = "Source and delta are the same document";
constexpr const char* NO_DELTA_MESSAGE = "Delta document doesn't have cmData node";
constexpr const char* NO_SOURCE_MESSAGE = "Source document doesn't have cmData node";

/// Returns why an object of a delta with that operation conflicts with a source that has an object
/// of the name, or has none; nothing when it does not.
std::optional<std::string> conflictOf(const model::LibTarnManagedObject::Operation& operation,
                                      bool isThere, const model::DistinguishedName& distName);

/// Returns what "auto" means: update of an object that is there, otherwise create.
model::LibTarnManagedObject::Operation explicitOperation(bool isThere);

// The parts of an update. `source` is not `delta`.

void updateScalars(util::TarnFactory& factory, model::LibTarnManagedObjectImp& source,
                   const model::LibTarnManagedObject& delta, model::UndoLog& log);
void updateLists(util::TarnFactory& factory, model::LibTarnManagedObjectImp& source,
                 const model::LibTarnManagedObject& delta, model::UndoLog& log);
void updateExtensions(util::TarnFactory& factory, model::LibTarnManagedObjectImp& source,
                      const model::LibTarnManagedObject& delta, model::UndoLog& log);
void update(util::TarnFactory& factory, model::LibTarnManagedObject& source,
            const model::LibTarnManagedObject& delta, model::UndoLog& log);

/// The changes that merges make in a source. They stay only if finish() is reached.
class Changes {
 public:
  using Object = model::LibTarnManagedObject;
  using Operation = Object::Operation;

  Changes(model::LibTarnCmDataImp& source, util::TarnFactory& factory)
      : source_(source), factory_(factory) {}

  /// Applies a whole delta. Throws EditorException for its first conflict.
  void applyAll(model::LibTarnCmDataImp& delta);
  /// Applies `delta`; `source` is the object of the name `distName`, or null.
  void apply(Object* source, Object& delta, const model::DistinguishedName& distName,
             Operation operation);
  /// Like apply(). For "auto", first writes the explicit operation into the delta, and so into the
  /// copy.
  void applyResolvingAuto(Object* source, Object& delta, const model::DistinguishedName& distName);
  /// Appends copies of the log entries, when source and delta have a header.
  void addLogs(const model::LibTarnCmDataImp& delta);
  /// Makes the changes that cannot fail, and keeps all of them.
  void finish();

 private:
  Object* find(const model::DistinguishedName& distName) const;
  void removeDeleted(const model::DistinguishedName& distName);

  model::LibTarnCmDataImp& source_;
  util::TarnFactory& factory_;
  model::UndoLog log_;
  // Objects that are still in the source: those that this delta deletes, and those of earlier ones.
  std::vector<model::DistinguishedName> deleted_;
  std::set<std::string_view> deletedBefore_;
  model::LibTarnHeaderImp* header_ = nullptr;
};

}  // namespace editor
}  // namespace libtarn
