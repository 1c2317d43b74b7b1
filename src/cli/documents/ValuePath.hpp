#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/model/Structure.hpp"

namespace tarn {

/// Where a value stands in a managed object: "NAME" is a parameter or a whole list, "NAME[2]" the
/// second value or item of a list, "NAME[2].COMPONENT" a component of that item, and
/// "EXTENSION.NAME" a parameter of an extension. Every command reads and writes values by such
/// paths.
///
/// Names may hold brackets and dots. Of several meanings, the first one in the order above counts
/// that an object has.
class ValuePath {
 public:
  /// What a path leads to; std::monostate when the object has no such value.
  using Place = std::variant<std::monostate, libtarn::model::Scalar*, libtarn::model::List*,
                             libtarn::model::Structure*>;
  /// The name of an extension, and that of a parameter in it.
  struct InExtension {
    std::string extension;
    std::string parameter;
  };
  /// The parts of "NAME[INDEX].COMPONENT" or "NAME[INDEX]".
  struct InList {
    std::string list;
    std::size_t index;  // from 1
    std::optional<std::string> component;
  };

  explicit ValuePath(std::string text);

  const std::string& text() const { return text_; }
  /// The extensions and parameters that the path may stand for, one for each dot in it.
  const std::vector<InExtension>& inExtensions() const { return inExtensions_; }
  /// Set if the path has the form of one into a list.
  const std::optional<InList>& inList() const { return inList_; }

  Place find(const libtarn::model::LibTarnManagedObject& object) const;
  /// Returns the single value at the path, or null: also when a list or an item is there.
  libtarn::model::Scalar* findValue(const libtarn::model::LibTarnManagedObject& object) const;
  /// Removes what find() returned for `object`. Returns false, with nothing removed, for a
  /// component of an item, which cannot be removed alone.
  bool remove(libtarn::model::LibTarnManagedObject& object, const Place& place) const;

 private:
  bool removeScalar(libtarn::model::LibTarnManagedObject& object,
                    libtarn::model::Scalar& scalar) const;
  Place findInList(const libtarn::model::LibTarnManagedObject& object) const;

  std::string text_;
  std::optional<InList> inList_;
  std::vector<InExtension> inExtensions_;
};

/// Returns what stands at `place` as text: a single value, an item as "NAME=VALUE" with tabs
/// between its components, and a list with a line for each value or item. Every line but a single
/// value ends in a line end.
std::string textAt(const ValuePath::Place& place);

}  // namespace tarn
