#pragma once

#include <string>
#include <vector>

#include "model/LibTarnManagedObject.hpp"
#include "util/TarnFactory.hpp"

namespace tarn {

/// What a user says of the managed objects that are meant.
struct ObjectMask {
  std::string className = "#";          ///< "#" for any.
  std::string distName = "_-_";         ///< Part of the name; "_-_" for any.
  std::vector<std::string> parameters;  ///< "NAME=VALUE" each.

  /// The mask as an object for match(), built by `factory` and owned by its document. Throws
  /// CommandError for a parameter without "=".
  libtarn::model::LibTarnManagedObject& build(libtarn::util::TarnFactory& factory) const;
};

}  // namespace tarn
