#pragma once

#include <utility>
#include <vector>

#include "libtarn/TarnApi.hpp"
#include "libtarn/editor/Difference.hpp"

namespace libtarn {

namespace model {
class LibTarnDocument;
}

namespace editor {

/// What counts as a difference, apart from what always does.
struct DiffOptions {
  /// The operation of an object that both documents have.
  bool operations = false;
  /// Headers and their log entries.
  bool logs = false;
  /// What is around the objects: attributes of the root and of `cmData`, such as "type".
  bool envelope = true;
};

/// The differences between two documents, which stay as they are.
///
/// Objects are compared by their names; parameters, lists, extensions and components by theirs;
/// values and items of a list, and log entries, by their positions. The order of objects,
/// parameters and attributes does not count. What a host made of a document counts as its printed
/// text would: the tree is compared, not the indexes.
///
/// Every element and every text below the root is compared. Elements for which the format has no
/// place, those with an abbreviated tag included, are compared as a whole and in their order
/// (Difference::Part::Other). An absent name counts as "". Of several elements with one name the
/// first ones are compared, then the second ones, and so on.
///
/// Takes time for both documents, and memory for what differs. Does not recurse on the depth of a
/// document. While it is constructed, no other thread may change one of the documents. Throws
/// std::bad_alloc without memory.
class TARN_API TarnDiff {
 public:
  /// Compares the documents, which stay the caller's and may be one and the same.
  TarnDiff(const model::LibTarnDocument& oldDocument, const model::LibTarnDocument& newDocument,
           const DiffOptions& options = DiffOptions());

  /// Returns the differences: those outside of objects, then those of the objects, in byte order of
  /// the objects' names. Those of one object are in the order of Difference::Part, those of one
  /// part in byte order of their names, what a list or an extension holds directly after it.
  ///
  /// An object that only one document has is one difference; contentsOf() returns what it holds. A
  /// list, item or extension is one difference, and everything in it another one. A second `cmData`
  /// follows the first one with everything in it.
  const std::vector<Difference>& getDifferences() const& { return differences_; }
  /// Like the other overload, for a comparison that ends now.
  std::vector<Difference> getDifferences() && { return std::move(differences_); }

  /// Returns everything that `object`, of any document, holds: as differences of an object that has
  /// been added with it, or removed. The operation is among them only if `operation` is true.
  static std::vector<Difference> contentsOf(const model::LibTarnManagedObject& object,
                                            Difference::Kind kind, bool operation = false);

 private:
  std::vector<Difference> differences_;
};

}  // namespace editor
}  // namespace libtarn
