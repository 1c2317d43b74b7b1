#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

namespace libtarn {
namespace util {
namespace xml {

/// The attributes of one element.
class AttributeNames {
 public:
  void clear() {
    few_.clear();
    if (!many_.empty()) many_.clear();
  }

  /// Returns the same name where it was added before, or adds this one.
  std::optional<std::string_view> addOrFind(std::string_view name) {
    if (many_.empty() && few_.size() < FEW) {
      const auto found = std::find(few_.begin(), few_.end(), name);
      if (found != few_.end()) return *found;
      few_.push_back(name);
      return std::nullopt;
    }
    if (many_.empty()) many_.insert(few_.begin(), few_.end());
    const auto [place, isNew] = many_.insert(name);
    return isNew ? std::nullopt : std::optional(*place);
  }

 private:
  static constexpr std::size_t FEW = 16;

  std::vector<std::string_view> few_;
  std::set<std::string_view> many_;  // all of them, once they are more than a few
};

}  // namespace xml
}  // namespace util
}  // namespace libtarn
