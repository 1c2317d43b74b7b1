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
/// The operation of each managed object of a delta says what happens to the source's object of that
/// name: "create", "update", "delete", or "auto", which is create or update, whichever fits.
/// Everything that the source gets is copied into its pool: a delta may be destroyed after its
/// merge.
///
/// Must not outlive the source, and uses the cmData that the source had when the merge was
/// constructed. While an operation runs, no other thread may use source or delta.
///
/// A host calls mergeDocument(), or mergeManagedObject() for single objects. The operations after
/// these two are their steps; they need a source with a cmData (asserted).
class TARN_API TarnMerge {
 public:
  /// A step for one object of a delta: the source's object of that name, or null; the delta's
  /// object; its name.
  using MergeExecutor = void (TarnMerge::*)(model::LibTarnManagedObject* source,
                                            model::LibTarnManagedObject* delta,
                                            const model::DistinguishedName& distName);

  /// Applies deltas to `source`, which stays the caller's.
  explicit TarnMerge(model::LibTarnDocument& source);

  /// Applies every object of `delta`, and appends its log entries to the source's header when both
  /// have one. Costs what the delta costs.
  ///
  /// Returns true when done. Returns false, with nothing changed and the reason in the log at level
  /// ERROR, when either document has no cmData, when `delta` is the source itself, or when an
  /// object conflicts: update or delete of a missing object, or create of an existing one.
  ///
  /// Throws ModelException for an object whose copy breaks a rule of the model, and std::bad_alloc;
  /// source and delta are then unchanged.
  ///
  /// Afterwards, objects of the delta with "auto" carry "create" or "update". Copies have the full
  /// tags of their classes, also of elements whose tags are abbreviations of those.
  bool mergeDocument(model::LibTarnDocument& delta);
  /// Applies one object, of any document, which stays as it is. Returns false, with nothing
  /// changed, when it conflicts or when the source has no cmData; only the latter is logged. Throws
  /// like mergeDocument().
  bool mergeManagedObject(model::LibTarnManagedObject& delta);

  /// Returns why the last mergeDocument() or mergeManagedObject() returned false. The code is then
  /// model::EditResult::Refused; the message is that of the log, or empty without memory for it.
  /// Before the first call, and after one that returned true, the code is 0. Valid until the next
  /// call.
  const model::Diagnostic& getDiagnostic() const { return diagnostic_; }

  /// Returns the first cmData of `document`, or null.
  model::LibTarnCmDataImp* getCmData(model::LibTarnDocument& document);
  /// Does mergeDocument() for a delta's cmData, which must not be the source's own.
  bool doMerge(model::LibTarnCmDataImp* delta);
  /// Calls `executor` for each object of `delta`, in byte order of their names.
  void goThroughAllDeltaMoWithExecutor(model::LibTarnCmDataImp* delta, MergeExecutor executor);
  /// Throws EditorException when `delta` conflicts with `source`.
  void checkForMergeConflicts(model::LibTarnManagedObject* source,
                              model::LibTarnManagedObject* delta,
                              const model::DistinguishedName& distName);
  /// Applies `delta`, which must not conflict. Replaces its operation "auto" by the explicit one.
  void mergeDocuments(model::LibTarnManagedObject* source, model::LibTarnManagedObject* delta,
                      const model::DistinguishedName& distName);
  /// Returns what "auto" means: update of a `source` object, create when it is null.
  model::LibTarnManagedObject::Operation getExplicitOperationFromAutoOperation(
      const model::LibTarnManagedObject* source);
  /// Adds a copy of `delta`, unless the source has an object of that name.
  void doOperationCreate(const model::LibTarnManagedObject* delta);
  /// Removes the source's object of that name.
  void doOperationDelete(const model::DistinguishedName& distName);
  /// Updates parameters, lists and extensions; the attributes of `source` stay. Does nothing for an
  /// object that is its own delta. Throws like mergeDocument(), with nothing changed.
  void doOperationUpdate(model::LibTarnManagedObject* source,
                         const model::LibTarnManagedObject* delta);
  /// Sets parameters of `source` to the values of the delta's and adds the missing ones. Does
  /// nothing but log an ERROR line for an object that is its own delta. Throws like
  /// mergeDocument(), with nothing changed.
  void updateScalars(model::LibTarnManagedObject* source, const model::LibTarnManagedObject* delta);
  /// Replaces the lists of `source` that the delta has by copies of those, and adds the missing
  /// ones. Does nothing but log an ERROR line for an object that is its own delta. Throws like
  /// mergeDocument(), with nothing changed.
  void updateLists(model::LibTarnManagedObject* source, const model::LibTarnManagedObject* delta);
  /// Replaces all extensions of `source` that have a name of the delta's by copies of those; of
  /// several with one name in the delta, the last one counts. Does nothing but log an ERROR line
  /// for an object that is its own delta. Throws like mergeDocument(), with nothing changed.
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
