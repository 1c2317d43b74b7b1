#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "documents/ObjectPattern.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// Which managed objects of a document a command means. The requests of commands hold it by value.
struct Selection {
  std::string className = ANY_TEXT;
  std::string distName = ANY_NAME;  ///< A part of the name.
  std::string version = ANY_TEXT;
  std::string operation;                ///< "" for any.
  std::vector<std::string> parameters;  ///< "NAME=VALUE" each, or "NAME" for any value.
  std::string file;  ///< A document whose first object selects by all this instead; "" for none.

  /// True if every object is meant.
  bool isEverything() const;
};

/// The managed objects of the file at `path`, loaded into `document`, that are selected, in the
/// order of their names. Throws CommandError, also when there are none.
std::vector<libtarn::model::LibTarnManagedObject*> loadSelected(const std::string& path,
                                                                const Selection& selection,
                                                                Document& document);

/// Throws CommandError when `count`, the number of selected objects in the file at `path`, is 0.
void requireSelected(const std::string& path, std::size_t count);

}  // namespace tarn
