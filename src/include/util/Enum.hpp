#pragma once

#include <map>
#include <string>

#include "Assertion.hpp"
#include "TarnApi.hpp"

namespace libtarn {
namespace util {

/// A constant of a closed set of texts, or a copy of one.
///
/// `T` selects the set. Constants are static objects, made before threads start; they register
/// themselves in two tables, which are only read afterwards. A copy is the pair of ordinal and
/// validity. Not thread-safe while constants are made.
template <class T>
class TARN_API Enum {
 public:
  /// A new constant with the next ordinal of its set. Two of one text are an assertion; a null text
  /// makes a value that is not valid and in no table.
  explicit Enum(const char* text) : ordinal_(count++), valid_(text != nullptr) {
    if (!valid_) return;
    const auto stringInsertResult = getStringToEnum().emplace(text, this);
    TARN_ASSERT(stringInsertResult.second, "stringInsertResult.second");
    getOrdinalToString().emplace(ordinal_, text);
  }

  /// The text registered for this ordinal (asserted).
  const std::string& toString() const {
    const auto it = getOrdinalToString().find(ordinal_);
    TARN_ASSERT(it != getOrdinalToString().end(), "it != getOrdinalToString().end()");
    return it->second;
  }

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

  /// The constants of the set by their texts, and the texts by ordinal.
  static std::map<std::string, const Enum*>& getStringToEnum() { return tables().stringToEnum; }
  static std::map<int, std::string>& getOrdinalToString() { return tables().ordinalToString; }

 private:
  struct Tables {
    std::map<std::string, const Enum*> stringToEnum;
    std::map<int, std::string> ordinalToString;
  };

  // There before the first constant. Host and library share them: compilers agree on the name of
  // what is static here only as long as the type that is returned is none of the standard
  // library's.
  static Tables& tables() {
    static Tables tables;
    return tables;
  }

  int ordinal_;
  bool valid_;
};

template <class T>
int Enum<T>::count = 0;

}  // namespace util
}  // namespace libtarn
