#include "documents/Condition.hpp"

#include <regex.h>

#include <array>
#include <map>
#include <new>
#include <string_view>
#include <utility>
#include <variant>

#include "documents/ValueText.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Scalar.hpp"
#include "text/decimal.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;

/// A compiled regular expression.
struct Condition::Expression {
  Expression(const ValueText& text, const std::string& pattern) {
    const int error = ::regcomp(&compiled, pattern.c_str(), REG_EXTENDED | REG_NOSUB);
    if (error == 0) return;
    if (error == REG_ESPACE) throw std::bad_alloc();
    std::array<char, 256> message{};
    ::regerror(error, &compiled, message.data(), message.size());
    text.refuse(message.data());
  }
  Expression(const Expression&) = delete;
  Expression& operator=(const Expression&) = delete;
  ~Expression() { ::regfree(&compiled); }

  bool isMetBy(const char* value) const {
    const int result = ::regexec(&compiled, value, 0, nullptr, 0);
    if (result == REG_ESPACE) throw std::bad_alloc();
    return result == 0;
  }

  regex_t compiled{};
};

/// Reads the parts of a condition in their order.
class Condition::Reader {
 public:
  explicit Reader(const std::string& condition) : text("--p", condition), name(text.readName()) {
    const std::map<std::string, Operator> operators = {
        {"", Operator::Has},       {"=", Operator::Equal},   {"!=", Operator::Unequal},
        {"<", Operator::Less},     {"<=", Operator::AtMost}, {">", Operator::Greater},
        {">=", Operator::AtLeast}, {"~", Operator::Matches}};
    const std::string characters = text.readOperator();
    const auto found = operators.find(characters);
    if (found == operators.end()) {
      text.refuse("'" + characters +
                  "' is none of = != < <= > >= ~; quote a name or a value that "
                  "holds these characters");
    }
    kind = found->second;
    if (kind != Operator::Has) operand = text.readValue();
    isText = text.wasQuoted();
    const bool mayBeEmpty =
        kind == Operator::Has || kind == Operator::Equal || kind == Operator::Unequal || isText;
    if (operand.empty() && !mayBeEmpty) text.refuse("a value is missing");
    if (kind == Operator::Matches) expression = std::make_unique<Expression>(text, operand);
  }

  ValueText text;
  std::string name;
  Operator kind = Operator::Has;
  std::string operand;
  bool isText = false;
  std::unique_ptr<Expression> expression;
};

Condition::Condition(const std::string& text) : Condition(Reader(text)) {}

Condition::Condition(Reader&& reader)
    : path_(std::move(reader.name)),
      operator_(reader.kind),
      operand_(std::move(reader.operand)),
      isNumber_(!reader.isText && isDecimal(operand_)),
      expression_(std::move(reader.expression)) {}

Condition::Condition(Condition&&) noexcept = default;
Condition& Condition::operator=(Condition&&) noexcept = default;
Condition::~Condition() = default;

Condition::Answer Condition::ask(const LibTarnManagedObject& object) const {
  const ValuePath::Place place = path_.find(object);
  if (std::holds_alternative<std::monostate>(place)) return Answer::NoSuchValue;
  if (operator_ == Operator::Has) return Answer::Yes;
  if (const auto* const scalar = std::get_if<Scalar*>(&place)) {
    return isMetBy((*scalar)->getValue()) ? Answer::Yes : Answer::No;
  }
  const auto* const list = std::get_if<List*>(&place);
  const Scalar* value = list ? (*list)->getScalarValues() : nullptr;
  while (value && !isMetBy(value->getValue())) value = value->getNextSiblingElement();
  return value ? Answer::Yes : Answer::No;
}

bool Condition::isMetBy(const char* value) const {
  if (operator_ == Operator::Matches) return expression_->isMetBy(value);
  if (isNumber_ && isDecimal(value)) return isInOrder(compareDecimals(value, operand_));
  if (operator_ == Operator::Equal) return operand_ == value;
  if (operator_ == Operator::Unequal) return operand_ != value;
  return !isNumber_ && isInOrder(std::string_view(value).compare(operand_));
}

bool Condition::isInOrder(int order) const {
  switch (operator_) {
    case Operator::Equal:
      return order == 0;
    case Operator::Unequal:
      return order != 0;
    case Operator::Less:
      return order < 0;
    case Operator::AtMost:
      return order <= 0;
    case Operator::Greater:
      return order > 0;
    default:
      return order >= 0;
  }
}

}  // namespace tarn
