#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "documents/ObjectPattern.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// The options that select managed objects of a document. Requests of commands hold it by value.
struct Selection {
  std::string className = ANY_TEXT;
  std::string distName = ANY_NAME;  ///< A part of the name.
  std::string version = ANY_TEXT;
  std::string operation;                ///< "" for any.
  std::vector<std::string> parameters;  ///< "NAME=VALUE" each, or "NAME" for any value.
  std::string file;  ///< A document whose first object selects by all this instead; "" for none.

  /// True if it selects every object.
  bool isEverything() const;
};

/// Loads the file at `path` into `document` and returns the selected managed objects in the order
/// of their names. Throws CommandError, also when there are none.
std::vector<libtarn::model::LibTarnManagedObject*> loadSelected(const std::string& path,
                                                                const Selection& selection,
                                                                Document& document);

/// Throws CommandError when `count`, the number of selected objects in the file at `path`, is 0.
void requireSelected(const std::string& path, std::size_t count);

}  // namespace tarn
