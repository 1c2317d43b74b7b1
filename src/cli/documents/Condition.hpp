#pragma once

#include <memory>
#include <string>

#include "documents/ValuePath.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// A condition on a value of a managed object: "NAME", which asks whether the object has it, or
/// "NAME OPERATOR VALUE" with one of = != < <= > >= ~. NAME is a ValuePath.
///
/// Two decimal numbers are compared as numbers, of any length, unless the one in the condition is
/// quoted. A value that is no number is neither
/// less nor greater than a number. Other texts are compared byte by byte. ~ takes a POSIX extended
/// regular expression that any part of the value may match. Of a list without an index, one value
/// must meet the condition. An object that lacks the value meets no condition on it, not even one
/// with !=.
class Condition {
 public:
  /// Throws CommandError, which marks the place, for a text that cannot be read as a condition.
  explicit Condition(const std::string& text);
  Condition(Condition&&) noexcept;
  Condition& operator=(Condition&&) noexcept;
  ~Condition();

  enum class Answer { NoSuchValue, No, Yes };

  Answer ask(const libtarn::model::LibTarnManagedObject& object) const;
  /// The path of the value that the condition is about.
  const ValuePath& path() const { return path_; }

 private:
  struct Expression;
  class Reader;
  enum class Operator { Has, Equal, Unequal, Less, AtMost, Greater, AtLeast, Matches };

  explicit Condition(Reader&& reader);
  bool isMetBy(const char* value) const;
  bool isInOrder(int order) const;

  ValuePath path_;
  Operator operator_;
  std::string operand_;
  bool isNumber_;  // the operand
  std::unique_ptr<Expression> expression_;
};

}  // namespace tarn
