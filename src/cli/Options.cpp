#include "Options.hpp"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>

#include "CommandError.hpp"

namespace tarn {

namespace {

// "a, b or c".
std::string listOf(const std::vector<std::string>& words) {
  std::string list;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i > 0) list += i + 1 == words.size() ? " or " : ", ";
    list += words[i];
  }
  return list;
}

std::string expectation(const std::string& expected, const std::string& found) {
  return "expected " + expected + ", not '" + found + "'";
}

// A check of a value. It has no description, which the help would show beside the form of the
// value.
CLI::Validator check(const std::function<std::string(std::string&)>& messageOf) {
  return CLI::Validator(messageOf, "");
}

template <class Number>
CLI::Validator checkNumber(Number least) {
  return check([least](std::string& text) -> std::string {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc::result_out_of_range && rest == end) return "too large: " + text;
    if (error == std::errc() && rest == end && number >= least) return "";
    return expectation("a whole number, " + std::to_string(least) + " or more", text);
  });
}

CLI::Validator oneOf(const std::vector<std::string>& words) {
  return check([words](const std::string& text) {
    const bool isOne = std::find(words.begin(), words.end(), text) != words.end();
    return isOne ? "" : expectation(listOf(words), text);
  });
}

}  // namespace

void Options::addArgument(const char* name, std::string& value, const char* help) {
  app_.add_option(name, value, help)->required();
}

void Options::addArguments(const char* name, std::vector<std::string>& values, const char* help) {
  app_.add_option(name, values, help)->required();
}

void Options::addOptionalArguments(const char* name, std::vector<std::string>& values,
                                   const char* help) {
  app_.add_option(name, values, help);
}

void Options::addOptionalArgument(const char* name, std::string& value, const char* help) {
  app_.add_option(name, value, help);
}

void Options::addFlag(const std::string& option, bool& value, const char* help) {
  app_.add_flag(option, value, help)->disable_flag_override();
}

void Options::addText(const std::string& option, const char* form, std::string& value,
                      const char* help) {
  app_.add_option(option, value, help)->type_name(form);
}

void Options::addOptionalText(const std::string& option, const char* form,
                              std::optional<std::string>& value, const char* help) {
  app_.add_option_function<std::string>(
          option, [&value](const std::string& text) { value = text; }, help)
      ->type_name(form);
}

void Options::addFlagOrText(const std::string& option, const char* form, bool& isGiven,
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
  app_.add_option(option, value, help)->type_name(form)->check(oneOf(words));
}

void Options::addWords(const std::string& option, const char* form,
                       std::vector<std::string>& values, const std::vector<std::string>& words,
                       const char* help) {
  app_.add_option(option, values, help)
      ->type_name(form)
      ->allow_extra_args(false)
      ->check(oneOf(words));
}

template <class Number>
void Options::addNumber(const std::string& option, Number& value, const char* help) {
  app_.add_option(option, value, help)
      ->type_name("N")
      ->check(checkNumber<Number>(0))
      ->capture_default_str();
}
template void Options::addNumber(const std::string&, unsigned&, const char*);
template void Options::addNumber(const std::string&, unsigned long&, const char*);

void Options::addPositiveNumber(const std::string& option, std::size_t& value, const char* help) {
  app_.add_option(option, value, help)
      ->type_name("N")
      ->check(checkNumber<std::size_t>(1))
      ->capture_default_str();
}

void Options::addNumberedChoice(const std::string& option, const char* form,
                                const std::function<void(int)>& set,
                                const std::map<std::string, int>& words, const std::string& shown,
                                const char* help) {
  std::vector<std::string> names;
  names.reserve(words.size());
  for (const auto& [word, number] : words) names.push_back(word);
  const auto replaceByNumber = [words, names](std::string& text) -> std::string {
    const auto found = words.find(text);
    if (found == words.end()) return expectation(listOf(names), text);
    text = std::to_string(found->second);
    return "";
  };
  app_.add_option_function<int>(option, set, help)
      ->type_name(form)
      ->transform(check(replaceByNumber))
      ->default_str(shown);
}

void Options::refuseFormer(const std::string& option, const std::string& successor) {
  const auto refuse = [option, successor](const std::string& /*value*/) {
    throwUsageError("there is no option '" + option + "' any more; use " + successor);
  };
  app_.add_option_function<std::string>(option, refuse)->group("");
}

void Options::require(const std::string& option) { app_.get_option(option)->required(); }

void Options::showDefault(const std::string& option) {
  app_.get_option(option)->capture_default_str();
}

// Validators run once the whole command line has been read.
void Options::allowOnlyWithAny(const std::string& option, const std::vector<std::string>& others) {
  app_.get_option(option)->check(check([&app = app_, others](const std::string& /*value*/) {
    const bool isAllowed = std::any_of(others.begin(), others.end(),
                                       [&app](const auto& other) { return app.count(other) > 0; });
    return isAllowed ? std::string() : "only with " + listOf(others);
  }));
}

void Options::exclude(const std::string& option, const std::string& other) {
  app_.get_option(option)->excludes(app_.get_option(other));
}

}  // namespace tarn
