#pragma once

#include <string>
#include <vector>

namespace tarn {

/// Returns the candidate with the smallest edit distance from `word`, or "" when none is near.
std::string nearest(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace tarn
