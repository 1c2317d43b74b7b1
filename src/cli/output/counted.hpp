#pragma once

#include <cstddef>
#include <string>

namespace tarn {

/// "1 object", "2 objects": the count and the noun, which is given in the singular and takes an
/// "s".
inline std::string counted(std::size_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace tarn
