// Included by other headers; not for hosts. Enum.hpp has the whole class.
#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace util {

/// A constant of a closed set of texts, or a copy of one.
///
/// `T` selects the set. Constants are static objects, made before threads start; they register
/// themselves in two tables, which are only read afterwards. A copy is the pair of ordinal and
/// validity. Not thread-safe while constants are made. The tables, and sets of a host's own, need
/// <libtarn/util/Enum.hpp>.
template <class T>
class TARN_API Enum {
 public:
  /// A new constant with the next ordinal of its set. Two of one text are an assertion; a null text
  /// makes a value that is not valid and in no table.
  explicit Enum(const char* text);

  /// The text registered for this ordinal (asserted).
  const std::string& toString() const;

  /// The number of the constant in its set, from 0.
  int getOrdinal() const { return ordinal_; }
  /// Whether it has a text.
  bool isValid() const { return valid_; }

  /// Whether both are the same constant.
  bool operator==(const Enum& other) const {
    return ordinal_ == other.ordinal_ && valid_ == other.valid_;
  }
  bool operator!=(const Enum& other) const { return !(*this == other); }

  /// The ordinal that the next constant gets.
  static int count;

  /// The constants of the set by their texts, std::map<std::string, const Enum*>&, and the texts by
  /// ordinal, std::map<int, std::string>&.
  static auto& getStringToEnum();
  static auto& getOrdinalToString();

 private:
  struct Tables;
  static Tables& tables();

  int ordinal_;
  bool valid_;
};

}  // namespace util
}  // namespace libtarn
