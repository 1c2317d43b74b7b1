#include "text/naturalOrder.hpp"

#include <algorithm>
#include <cstddef>

namespace tarn {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// The digits that a text begins with.
std::size_t countDigits(std::string_view text) {
  return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) -
                                  text.begin());
}

std::string_view withoutZeros(std::string_view digits) {
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  return digits;
}

int compareNumbers(std::string_view a, std::string_view b) {
  a = withoutZeros(a);
  b = withoutZeros(b);
  if (a.size() != b.size()) return a.size() < b.size() ? -1 : 1;
  return a.compare(b);
}

// "/" is 0, the end of a text is before all of them.
int rankOf(char c) { return c == '/' ? 0 : 1 + static_cast<unsigned char>(c); }

}  // namespace

int compareNaturally(std::string_view a, std::string_view b) {
  const std::string_view wholeA = a;
  const std::string_view wholeB = b;
  for (;;) {
    const auto [endOfA, endOfB] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    std::size_t same = static_cast<std::size_t>(endOfA - a.begin());
    // The digits before the difference belong to the numbers that differ.
    while (same > 0 && isDigit(a[same - 1])) --same;
    a.remove_prefix(same);
    b.remove_prefix(same);
    if (a.empty() || b.empty()) break;
    if (!isDigit(a.front()) || !isDigit(b.front())) return rankOf(a.front()) - rankOf(b.front());
    const std::size_t digitsOfA = countDigits(a);
    const std::size_t digitsOfB = countDigits(b);
    const int order = compareNumbers(a.substr(0, digitsOfA), b.substr(0, digitsOfB));
    if (order != 0) return order;
    a.remove_prefix(digitsOfA);
    b.remove_prefix(digitsOfB);
  }
  if (a.empty() != b.empty()) return a.empty() ? -1 : 1;
  return wholeA.compare(wholeB);
}

}  // namespace tarn
