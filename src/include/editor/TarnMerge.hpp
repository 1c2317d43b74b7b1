#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/Diagnostic.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace libtarn {

namespace model {
class LibTarnCmDataImp;
class LibTarnDocument;
class TarnDomDocument;
}  // namespace model

namespace util {
class TarnFactory;
}

namespace editor {

/// Applies delta documents to a source document, which is changed in place.
///
/// The operation of each managed object of a delta says what becomes of the source's object of that
/// name: "create", "update", "delete", or "auto" for whichever of create and update fits. What the
/// source takes over is copied into its pool: a delta may be destroyed after its merge. Lives no
/// longer than the source, and keeps to the cmData that the source had when the merge was made. Has
/// source and delta to itself while it runs, on one thread.
///
/// A host calls mergeDocument(), or mergeManagedObject() for single objects. The steps that follow
/// them are what these two are made of; they need a source with a cmData (asserted).
class TARN_API TarnMerge {
 public:
  /// A step for one object of a delta: the source's object of that name, or null; the delta's
  /// object; its name.
  using MergeExecutor = void (TarnMerge::*)(model::LibTarnManagedObject* source,
                                            model::LibTarnManagedObject* delta,
                                            const model::DistinguishedName& distName);

  /// Applies deltas to `source`, which stays the caller's.
  explicit TarnMerge(model::LibTarnDocument& source);

  /// Applies every object of `delta` and appends its log entries to the source's header, when both
  /// have one. Returns true when done. Returns false, with nothing changed and the reason in the
  /// log at level ERROR, when either document has no cmData, when `delta` is the source itself, or
  /// when an object conflicts: update or delete of a missing one, create of one that is there.
  /// Objects of the delta with "auto" carry "create" or "update" afterwards. Throws ModelException
  /// for an object whose copy breaks a rule of the model, and std::bad_alloc; source and delta are
  /// then as they were. Copies have the tags of their classes, also of elements whose tags are only
  /// the beginnings of those. Costs what the delta costs.
  bool mergeDocument(model::LibTarnDocument& delta);
  /// Applies one object, of any document, which stays as it is. Returns false, with nothing
  /// changed, when it conflicts or when the source has no cmData; only the latter is logged. Throws
  /// as mergeDocument() does.
  bool mergeManagedObject(model::LibTarnManagedObject& delta);

  /// Why the last mergeDocument() or mergeManagedObject() returned false: the code is
  /// model::EditResult::Refused and the message the one of the log, without memory an empty one.
  /// Success before the first and after one that returned true. Good until the next one.
  const model::Diagnostic& getDiagnostic() const { return diagnostic_; }

  /// The first cmData of `document`, or null.
  model::LibTarnCmDataImp* getCmData(model::LibTarnDocument& document);
  /// mergeDocument() for a delta's cmData, which must not be the source's own.
  bool doMerge(model::LibTarnCmDataImp* delta);
  /// Calls `executor` for each object of `delta`, in byte order of their names.
  void goThroughAllDeltaMoWithExecutor(model::LibTarnCmDataImp* delta, MergeExecutor executor);
  /// Throws EditorException when `delta` cannot be applied.
  void checkForMergeConflicts(model::LibTarnManagedObject* source,
                              model::LibTarnManagedObject* delta,
                              const model::DistinguishedName& distName);
  /// Applies `delta`, which does not conflict, and writes an operation in place of "auto" into it.
  void mergeDocuments(model::LibTarnManagedObject* source, model::LibTarnManagedObject* delta,
                      const model::DistinguishedName& distName);
  /// What "auto" means: update of a `source` object, create when it is null.
  model::LibTarnManagedObject::Operation getExplicitOperationFromAutoOperation(
      const model::LibTarnManagedObject* source);
  /// Adds a copy of `delta`, unless the source has an object of that name.
  void doOperationCreate(const model::LibTarnManagedObject* delta);
  /// Removes the source's object of that name.
  void doOperationDelete(const model::DistinguishedName& distName);
  /// Updates parameters, lists and extensions; the attributes of `source` stay. Nothing is done for
  /// an update of an object with itself. This and the parts that follow change nothing when they
  /// throw, as mergeDocument() does; the parts refuse an object as its own delta with an ERROR
  /// line.
  void doOperationUpdate(model::LibTarnManagedObject* source,
                         const model::LibTarnManagedObject* delta);
  /// Gives parameters of `source` the values of the delta's and adds those that are missing.
  void updateScalars(model::LibTarnManagedObject* source, const model::LibTarnManagedObject* delta);
  /// Puts copies of the delta's lists in place of those of their names.
  void updateLists(model::LibTarnManagedObject* source, const model::LibTarnManagedObject* delta);
  /// Puts copies of the delta's extensions in place of all those of their names; the last of
  /// several of one name counts.
  void updateExtensions(model::LibTarnManagedObject* source,
                        const model::LibTarnManagedObject* delta);
  /// Appends the log entries of the delta's header to the source's, when both have one.
  void addHeaders(model::LibTarnCmDataImp* delta);

 private:
  bool refuse(const char* reason);

  model::TarnDomDocument* domDocument_;
  model::LibTarnCmDataImp* cmData_;
  util::TarnFactory& factory_;
  model::Diagnostic diagnostic_;
};

}  // namespace editor
}  // namespace libtarn
