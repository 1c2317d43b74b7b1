#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarn {

/// Reads the parts of a text such as "NAME>=VALUE" that a user gives for an option.
///
/// A name ends at certain characters, and blanks around it are no part of it. One that holds such a
/// character is quoted: "a=b" or 'a=b', with a backslash before a quote or a backslash.
/// Values may be quoted, too. Throws CommandError, which marks the place, for a text that cannot be
/// read.
class ValueText {
 public:
  /// `option` is the option that takes the text, such as "--p". A name ends at the first of
  /// `nameEnds`.
  ValueText(std::string option, std::string text, const char* nameEnds = "=!<>~");

  /// Reads a name, which must not be empty.
  std::string readName();
  /// Reads the operator characters that stand next, without the blanks around them; "" at the end.
  std::string readOperator();
  /// Reads `character` if it stands next. Returns whether it did.
  bool skip(char character);
  /// Reads all that is left, or a quoted text that must end where the text ends.
  std::string readValue();
  /// As readValue(), with the blanks before the value.
  std::string readExactValue();

  bool isAtEnd() const { return position_ == text_.size(); }
  /// True if the name or value that was read last was quoted.
  bool wasQuoted() const { return wasQuoted_; }

  /// Throws the CommandError for a fault where the last part that was read begins.
  [[noreturn]] void refuse(const std::string& message) const;

 private:
  bool isAtQuote() const;
  std::string readQuoted();
  void skipBlanks();

  std::string option_;
  std::string text_;
  std::string nameEnds_;
  std::size_t position_ = 0;
  std::size_t partStart_ = 0;
  bool wasQuoted_ = false;
};

}  // namespace tarn
