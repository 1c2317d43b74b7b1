#pragma once

#include <string>
#include <vector>

namespace tarn {

/// The candidate that differs least from `word`, by letters changed, left out or put in; "" when
/// none is near.
std::string nearest(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace tarn
