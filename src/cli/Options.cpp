#include "Options.hpp"

#include <CLI/CLI.hpp>
#include <cstddef>

namespace tarn {

namespace {

// Without its description, which the help would show beside the form of the value.
CLI::Validator silent(CLI::Validator validator) { return validator.description(""); }

// "a, b or c".
std::string listOf(const std::vector<std::string>& words) {
  std::string list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) list += i + 1 == words.size() ? " or " : ", ";
    list += words[i];
  }
  return list;
}

}  // namespace

void Options::addArgument(const char* name, std::string& value, const char* help) {
  app_.add_option(name, value, help)->required();
}

void Options::addArguments(const char* name, std::vector<std::string>& values, const char* help) {
  app_.add_option(name, values, help)->required();
}

void Options::addOptionalArgument(const char* name, std::string& value, const char* help) {
  app_.add_option(name, value, help);
}

void Options::addFlag(const std::string& option, bool& value, const char* help) {
  app_.add_flag(option, value, help);
}

void Options::addText(const std::string& option, const char* form, std::string& value,
                      const char* help) {
  app_.add_option(option, value, help)->type_name(form);
}

void Options::addOptionalText(const std::string& option, const char* form, bool& isGiven,
                              std::string& value, const char* help) {
  const auto set = [&isGiven, &value](const std::string& text) {
    isGiven = true;
    value = text;
  };
  // Both limits: with one number it would be a flag, whose value is "true".
  app_.add_option_function<std::string>(option, set, help)->type_name(form)->expected(0, 0);
}

void Options::addTexts(const std::string& option, const char* form,
                       std::vector<std::string>& values, const char* help) {
  app_.add_option(option, values, help)->type_name(form)->allow_extra_args(false);
}

void Options::addWord(const std::string& option, const char* form, std::string& value,
                      const std::vector<std::string>& words, const char* help) {
  app_.add_option(option, value, help)
      ->type_name(form)
      ->check(CLI::IsMember(words).description(listOf(words)));
}

template <class Number>
void Options::addNumber(const std::string& option, Number& value, const char* help) {
  app_.add_option(option, value, help)
      ->type_name("N")
      ->check(silent(CLI::NonNegativeNumber))
      ->capture_default_str();
}
template void Options::addNumber(const std::string&, unsigned&, const char*);
template void Options::addNumber(const std::string&, unsigned long&, const char*);

void Options::addPositiveNumber(const std::string& option, std::size_t& value, const char* help) {
  app_.add_option(option, value, help)
      ->type_name("N")
      ->check(silent(CLI::PositiveNumber))
      ->capture_default_str();
}

void Options::addNumberedChoice(const std::string& option, const char* form,
                                const std::function<void(int)>& set,
                                const std::map<std::string, int>& words, const std::string& shown,
                                const char* help) {
  CLI::CheckedTransformer transformer(words);
  transformer.description("");
  app_.add_option_function<int>(option, set, help)
      ->type_name(form)
      ->transform(transformer)
      ->default_str(shown);
}

void Options::require(const std::string& option) { app_.get_option(option)->required(); }

void Options::showDefault(const std::string& option) {
  app_.get_option(option)->capture_default_str();
}

void Options::allowOnlyWith(const std::string& option, const std::string& other) {
  app_.get_option(option)->needs(app_.get_option(other));
}

void Options::exclude(const std::string& option, const std::string& other) {
  app_.get_option(option)->excludes(app_.get_option(other));
}

}  // namespace tarn
