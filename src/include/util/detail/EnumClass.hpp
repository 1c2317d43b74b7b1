// Included by other headers; not for hosts. Enum.hpp has the whole class.
#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace util {

/// A constant of a closed set of texts, or a copy of one.
///
/// `T` selects the set. Constants are static objects, constructed before threads start. They
/// register themselves in two tables, which are only read afterwards; constructing them is not
/// thread-safe. A copy holds ordinal and validity. The tables, and a host's own sets, need
/// <libtarn/util/Enum.hpp>.
template <class T>
class TARN_API Enum {
 public:
  /// A new constant with the next ordinal of its set. Two with the same text are an assertion. A
  /// null text makes a value that is not valid and in no table.
  explicit Enum(const char* text);

  /// Returns the text registered for this ordinal (asserted).
  const std::string& toString() const;

  /// Returns the number of the constant in its set, from 0.
  int getOrdinal() const { return ordinal_; }
  /// Returns true if the value has a text.
  bool isValid() const { return valid_; }

  /// Returns true if both are the same constant.
  bool operator==(const Enum& other) const {
    return ordinal_ == other.ordinal_ && valid_ == other.valid_;
  }
  /// Returns true if the two are different constants.
  bool operator!=(const Enum& other) const { return !(*this == other); }

  /// The ordinal of the next constant.
  static int count;

  /// Returns the constants of the set by text: std::map<std::string, const Enum*>&.
  static auto& getStringToEnum();
  /// Returns the texts of the set by ordinal: std::map<int, std::string>&.
  static auto& getOrdinalToString();

 private:
  struct Tables;
  static Tables& tables();

  int ordinal_;
  bool valid_;
};

}  // namespace util
}  // namespace libtarn
