#include "text/decimal.hpp"

#include <algorithm>
#include <cstddef>

namespace tarn {

namespace {

constexpr std::string_view DIGITS = "0123456789";

struct Decimal {
  bool isNegative;
  std::string_view whole;     // without leading zeros
  std::string_view fraction;  // without zeros at the end
};

Decimal decimalOf(std::string_view text) {
  const bool isNegative = text.front() == '-';
  if (isNegative || text.front() == '+') text.remove_prefix(1);
  const std::size_t point = std::min(text.find('.'), text.size());
  std::string_view whole = text.substr(0, point);
  std::string_view fraction = text.substr(std::min(point + 1, text.size()));
  whole.remove_prefix(std::min(whole.find_first_not_of('0'), whole.size()));
  fraction = fraction.substr(0, fraction.find_last_not_of('0') + 1);
  const bool isZero = whole.empty() && fraction.empty();
  return {isNegative && !isZero, whole, fraction};
}

int compareSizes(const Decimal& a, const Decimal& b) {
  if (a.whole.size() != b.whole.size()) return a.whole.size() < b.whole.size() ? -1 : 1;
  const int order = a.whole.compare(b.whole);
  return order != 0 ? order : a.fraction.compare(b.fraction);
}

}  // namespace

bool isDecimal(std::string_view text) {
  if (!text.empty() && (text.front() == '-' || text.front() == '+')) text.remove_prefix(1);
  const std::size_t whole = std::min(text.find_first_not_of(DIGITS), text.size());
  if (whole == 0) return false;
  text.remove_prefix(whole);
  if (text.empty()) return true;
  return text.front() == '.' && text.size() > 1 &&
         text.find_first_not_of(DIGITS, 1) == std::string_view::npos;
}

int compareDecimals(std::string_view a, std::string_view b) {
  const Decimal left = decimalOf(a);
  const Decimal right = decimalOf(b);
  if (left.isNegative != right.isNegative) return left.isNegative ? -1 : 1;
  return left.isNegative ? compareSizes(right, left) : compareSizes(left, right);
}

}  // namespace tarn
