#include "nearest.hpp"

#include <algorithm>
#include <numeric>

namespace tarn {

namespace {

// The edit distance. Keeps one row of the table of distances between prefixes.
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string nearest(const std::string& word, const std::vector<std::string>& candidates) {
  std::string best;
  std::size_t least = std::max<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t differences = distance(word, candidate);
    if (differences >= least) continue;
    least = differences;
    best = candidate;
  }
  return best;
}

}  // namespace tarn
