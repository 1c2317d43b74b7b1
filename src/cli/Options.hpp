#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace tarn {

/// The arguments and options of one command. Each operation adds one and names the variable that it
/// fills, which must outlive the parse.
///
/// Commands use CLI11 only through this class: to compile a file that includes CLI11 takes ten
/// times as long as one that does not.
class Options {
 public:
  explicit Options(CLI::App& app) : app_(app) {}

  /// Adds a positional argument, which must be given.
  void addArgument(const char* name, std::string& value, const char* help);
  /// Adds a positional argument that takes one value or more.
  void addArguments(const char* name, std::vector<std::string>& values, const char* help);
  /// Adds a positional argument that takes any number of values.
  void addOptionalArguments(const char* name, std::vector<std::string>& values, const char* help);
  /// Adds a positional argument that may be left out.
  void addOptionalArgument(const char* name, std::string& value, const char* help);

  /// Adds an option without a value.
  void addFlag(const std::string& option, bool& value, const char* help);
  /// Adds an option that takes any text. The help shows `form` for the text.
  void addText(const std::string& option, const char* form, std::string& value, const char* help);
  /// Adds an option that takes any text and knows whether it was given.
  void addOptionalText(const std::string& option, const char* form,
                       std::optional<std::string>& value, const char* help);
  /// Adds an option that sets `isGiven`, and takes a text only behind "=".
  void addFlagOrText(const std::string& option, const char* form, bool& isGiven, std::string& value,
                     const char* help);
  /// Adds an option that takes a text and may be repeated.
  void addTexts(const std::string& option, const char* form, std::vector<std::string>& values,
                const char* help);
  /// Adds an option that takes one of `words`.
  void addWord(const std::string& option, const char* form, std::string& value,
               const std::vector<std::string>& words, const char* help);
  /// Adds an option that takes one of `words` and may be repeated.
  void addWords(const std::string& option, const char* form, std::vector<std::string>& values,
                const std::vector<std::string>& words, const char* help);
  /// Adds an option that takes one of `words`, each of which stands for a value. The help shows the
  /// word for what `value` holds now.
  template <class Value>
  void addChoice(const std::string& option, const char* form, Value& value,
                 const std::map<std::string, Value>& words, const char* help);
  /// Adds an option that takes 0 or more. `Number` is unsigned or std::size_t. The help shows what
  /// `value` holds now.
  template <class Number>
  void addNumber(const std::string& option, Number& value, const char* help);
  /// Adds an option that takes 1 or more. The help shows what `value` holds now.
  void addPositiveNumber(const std::string& option, std::size_t& value, const char* help);

  /// Refuses an option of an earlier version. The message names `successor`, the option of today.
  void refuseFormer(const std::string& option, const std::string& successor);
  /// Makes an option that was added mandatory.
  void require(const std::string& option);
  /// Shows in the help what the variable of `option` holds now.
  void showDefault(const std::string& option);
  /// Refuses `option` without any of `others`.
  void allowOnlyWithAny(const std::string& option, const std::vector<std::string>& others);
  /// Refuses `option` together with `other`.
  void exclude(const std::string& option, const std::string& other);

 private:
  void addNumberedChoice(const std::string& option, const char* form,
                         const std::function<void(int)>& set,
                         const std::map<std::string, int>& words, const std::string& shown,
                         const char* help);

  CLI::App& app_;
};

template <class Value>
void Options::addChoice(const std::string& option, const char* form, Value& value,
                        const std::map<std::string, Value>& words, const char* help) {
  std::map<std::string, int> numbers;
  std::string shown;
  for (const auto& [word, meaning] : words) {
    numbers[word] = static_cast<int>(meaning);
    if (meaning == value) shown = word;
  }
  const auto set = [&value](int number) { value = static_cast<Value>(number); };
  addNumberedChoice(option, form, set, numbers, shown, help);
}

}  // namespace tarn
