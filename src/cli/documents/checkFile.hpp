#pragma once

#include <cstddef>
#include <string>

#include "output/Finding.hpp"

namespace tarn {

/// What a check looks for.
struct CheckScope {
  bool all = false;             ///< Every fault, not only the first.
  bool strict = false;          ///< Also what only a conforming XML parser refuses.
  std::size_t limit = 100;      ///< Most faults for a file; 0 for as many as 64 MiB hold.
  bool unicodeColumns = false;  ///< Also columns in UTF-16 code units.
};

/// Checks the file at `path`. Throws nothing for a fault in the file, nor for one that takes more
/// memory than there is.
Finding checkFile(const std::string& path, const CheckScope& scope);

}  // namespace tarn
