#pragma once

#include <string>
#include <vector>

#include "documents/ObjectPattern.hpp"

namespace tarn {

/// The new values of the selected managed objects.
struct Changes {
  std::string className = ANY_TEXT;
  std::string version = ANY_TEXT;
  std::vector<std::string> parameters;  ///< "NAME=VALUE" each.
  std::string file;  ///< A document whose first object holds all this instead; "" for none.
};

}  // namespace tarn
