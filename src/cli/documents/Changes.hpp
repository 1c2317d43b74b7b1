#pragma once

#include <string>
#include <vector>

#include "documents/ObjectPattern.hpp"

namespace tarn {

/// What selected managed objects are to become.
struct Changes {
  std::string className = ANY_TEXT;
  std::string version = ANY_TEXT;
  std::vector<std::string> parameters;  ///< "NAME=VALUE" each.
  std::string file;  ///< A document whose first object holds all this instead; "" for none.
};

}  // namespace tarn
