#include "documents/ValueText.hpp"

#include <algorithm>
#include <utility>

#include "CommandError.hpp"

namespace tarn {

namespace {

constexpr std::string_view OPERATOR_CHARACTERS = "=!<>~";

}  // namespace

ValueText::ValueText(std::string option, std::string text, const char* nameEnds)
    : option_(std::move(option)), text_(std::move(text)), nameEnds_(nameEnds) {}

std::string ValueText::readName() {
  skipBlanks();
  partStart_ = position_;
  wasQuoted_ = isAtQuote();
  std::string name;
  if (wasQuoted_) {
    name = readQuoted();
  } else {
    const std::size_t end = std::min(text_.find_first_of(nameEnds_, position_), text_.size());
    name = text_.substr(position_, end - position_);
    name.erase(name.find_last_not_of(' ') + 1);
    position_ = end;
  }
  if (name.empty()) refuse("a name is missing");
  return name;
}

std::string ValueText::readOperator() {
  skipBlanks();
  partStart_ = position_;
  const std::size_t end =
      std::min(text_.find_first_not_of(OPERATOR_CHARACTERS, position_), text_.size());
  std::string characters = text_.substr(position_, end - position_);
  if (characters.empty() && !isAtEnd()) refuse("an operator is expected");
  position_ = end;
  return characters;
}

bool ValueText::skip(char character) {
  skipBlanks();
  if (isAtEnd() || text_[position_] != character) return false;
  ++position_;
  return true;
}

std::string ValueText::readValue() {
  skipBlanks();
  return readExactValue();
}

std::string ValueText::readExactValue() {
  partStart_ = position_;
  wasQuoted_ = isAtQuote();
  if (!wasQuoted_) {
    std::string value = text_.substr(position_);
    position_ = text_.size();
    return value;
  }
  std::string value = readQuoted();
  skipBlanks();
  partStart_ = position_;
  if (!isAtEnd()) refuse("nothing may follow a quoted value");
  return value;
}

void ValueText::refuse(const std::string& message) const {
  throwUsageError(option_ + ": " + message, text_, partStart_);
}

bool ValueText::isAtQuote() const {
  return !isAtEnd() && (text_[position_] == '"' || text_[position_] == '\'');
}

// A backslash before any other character than a quote or a backslash stands for itself, so that
// regular expressions can be quoted.
std::string ValueText::readQuoted() {
  const char quote = text_[position_++];
  std::string result;
  for (; !isAtEnd() && text_[position_] != quote; ++position_) {
    const bool isEscape = text_[position_] == '\\' && position_ + 1 < text_.size() &&
                          (text_[position_ + 1] == quote || text_[position_ + 1] == '\\');
    if (isEscape) ++position_;
    result += text_[position_];
  }
  if (isAtEnd()) refuse("the quote is not closed");
  ++position_;
  return result;
}

void ValueText::skipBlanks() {
  position_ = std::min(text_.find_first_not_of(' ', position_), text_.size());
}

}  // namespace tarn
