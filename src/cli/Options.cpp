#include "Options.hpp"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cstddef>
#include <system_error>
#include <utility>

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

// The texts of CLI11's own validators show its tables and limits. The help shows no description,
// which would stand beside the form of the value.
CLI::Validator validator(std::function<std::string(std::string&)> check) {
  return {std::move(check), ""};
}

template <class Number>
CLI::Validator numberFrom(Number least) {
  return validator([least](std::string& text) {
    const char* const end = text.data() + text.size();
    Number number{};
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error == std::errc::result_out_of_range && rest == end) return "too large: " + text;
    if (error == std::errc() && rest == end && number >= least) return std::string();
    return expectation(fmt::format("a whole number, {} or more", least), text);
  });
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
  app_.add_flag(option, value, help)->disable_flag_override();
}

void Options::addText(const std::string& option, const char* form, std::string& value,
                      const char* help) {
  app_.add_option(option, value, help)->type_name(form);
}

void Options::addTexts(const std::string& option, const char* form,
                       std::vector<std::string>& values, const char* help) {
  app_.add_option(option, values, help)->type_name(form)->allow_extra_args(false);
}

void Options::addWord(const std::string& option, const char* form, std::string& value,
                      const std::vector<std::string>& words, const char* help) {
  app_.add_option(option, value, help)
      ->type_name(form)
      ->check(validator([words](const std::string& word) {
        const bool isKnown = std::find(words.begin(), words.end(), word) != words.end();
        return isKnown ? std::string() : expectation(listOf(words), word);
      }));
}

template <class Number>
void Options::addNumber(const std::string& option, Number& value, const char* help) {
  app_.add_option(option, value, help)
      ->type_name("N")
      ->check(numberFrom(Number{0}))
      ->capture_default_str();
}
template void Options::addNumber(const std::string&, unsigned&, const char*);
template void Options::addNumber(const std::string&, unsigned long&, const char*);

void Options::addPositiveNumber(const std::string& option, std::size_t& value, const char* help) {
  app_.add_option(option, value, help)
      ->type_name("N")
      ->check(numberFrom(std::size_t{1}))
      ->capture_default_str();
}

void Options::addNumberedChoice(const std::string& option, const char* form,
                                const std::function<void(int)>& set,
                                const std::map<std::string, int>& words, const std::string& shown,
                                const char* help) {
  std::vector<std::string> known;
  known.reserve(words.size());
  for (const auto& [word, number] : words) known.push_back(word);
  const auto toNumber = [words, known](std::string& word) {
    const auto found = words.find(word);
    if (found == words.end()) return expectation(listOf(known), word);
    word = std::to_string(found->second);
    return std::string();
  };
  app_.add_option_function<int>(option, set, help)
      ->type_name(form)
      ->transform(validator(toNumber))
      ->default_str(shown);
}

void Options::require(const std::string& option) { app_.get_option(option)->required(); }

void Options::showDefault(const std::string& option) {
  app_.get_option(option)->capture_default_str();
}

void Options::allowOnlyWith(const std::string& option, const std::string& other) {
  app_.get_option(option)->needs(app_.get_option(other));
}

// Validators run once the whole command line has been read.
void Options::allowOnlyWithAny(const std::string& option, const std::vector<std::string>& others) {
  app_.get_option(option)->check(validator([&app = app_, others](const std::string& /*value*/) {
    const bool isAllowed = std::any_of(others.begin(), others.end(),
                                       [&app](const auto& other) { return app.count(other) > 0; });
    return isAllowed ? std::string() : "only with " + listOf(others);
  }));
}

void Options::exclude(const std::string& option, const std::string& other) {
  app_.get_option(option)->excludes(app_.get_option(other));
}

}  // namespace tarn
