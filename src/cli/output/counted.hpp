#pragma once

#include <cstddef>
#include <string>

namespace tarn {

/// Returns a number with its noun: "1 object", "2 objects".
inline std::string counted(std::size_t number, const std::string& noun) {
  return std::to_string(number) + " " + noun + (number == 1 ? "" : "s");
}

}  // namespace tarn
