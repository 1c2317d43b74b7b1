#include "CommandLine.hpp"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <sstream>
#include <vector>

#include "commandList.hpp"
#include "nearest.hpp"
#include "output/outputFile.hpp"

namespace tarn {

namespace {

std::vector<std::string> optionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
  }
  return names;
}

std::string withSuggestion(const std::string& message, const std::string& suggestion) {
  return suggestion.empty() ? message : message + ", did you mean '" + suggestion + "'?";
}

// The message of a number of values that an option does not take has numbers and types.
std::string messageOf(const CLI::ParseError& error) {
  std::string line = error.what();
  line.resize(std::min(line.find('\n'), line.size()));
  if (error.get_name() != "ArgumentMismatch") return line;
  const std::string option = line.substr(0, line.find_first_of(": "));
  const auto says = [&line](const char* text) { return line.find(text) != std::string::npos; };
  if (says("override")) return "--" + option + " takes no value";
  if (says("missing")) return option + " needs a value";
  if (says("received")) return option + " is given more than once";
  return line;
}

}  // namespace

CommandLine::CommandLine()
    : app_(std::make_unique<CLI::App>(
          "Inspects, validates, changes and merges configuration documents.", "tarn")) {
  app_->require_subcommand(1);
  app_->fallthrough();  // general options may also follow a subcommand
  addGeneralOptions();
  addAllCommands(*this);
}

CommandLine::~CommandLine() = default;

Options CommandLine::addCommand(const char* name, const char* summary,
                                std::function<Status()> work) {
  CLI::App* const command = app_->add_subcommand(name, summary);
  command->callback([this, work = std::move(work)] { work_ = work; });
  return Options(*command);
}

void CommandLine::addGeneralOptions() {
  app_->set_version_flag("--version", "tarn " TARN_VERSION, "Print the version and exit");
  Options options(*app_);
  options.addChoice<HostLog::Level>(
      "--log-level", "LEVEL", logLevel_,
      {{"debug", HostLog::Level::Debug},
       {"info", HostLog::Level::Info},
       {"error", HostLog::Level::Error},
       {"none", HostLog::Level::None}},
      "Write the library's log lines from this level on: debug, info, error, none");
  options.addChoice<ColorChoice>(
      "--color", "WHEN", color_,
      {{"auto", ColorChoice::Auto}, {"always", ColorChoice::Always}, {"never", ColorChoice::Never}},
      "Colour the output: auto, always, never");
}

Status CommandLine::run(int argc, char** argv) {
  refuseUnknownCommand(argc, argv);
  refuseMissingValue(argc, argv);
  try {
    app_->parse(argc, argv);
  } catch (const CLI::Success& success) {  // help or version was asked for
    std::ostringstream text;
    app_->exit(success, text, text);
    writeOutput(text.str());
    return Status::Done;
  } catch (const CLI::ParseError& error) {
    refuse(error);
  }
  HostLog::setLevel(logLevel_);
  setColorChoice(color_);
  return work_();
}

std::string CommandLine::helpOn(const std::string& command) const {
  if (!command.empty()) return requireCommand(command).help("tarn");
  // app_->help() would return the help of the command that was parsed.
  return app_->get_formatter()->make_help(app_.get(), "tarn", CLI::AppFormatMode::Normal);
}

const CLI::App* CommandLine::findCommand(const std::string& name) const {
  for (const CLI::App* command : std::as_const(*app_).get_subcommands(nullptr)) {
    if (command->get_name() == name) return command;
  }
  return nullptr;
}

const CLI::App& CommandLine::requireCommand(const std::string& name) const {
  if (const CLI::App* const command = findCommand(name)) return *command;
  std::vector<std::string> names;
  for (const CLI::App* command : std::as_const(*app_).get_subcommands(nullptr)) {
    names.push_back(command->get_name());
  }
  throwUsageError(withSuggestion("no command '" + name + "'", nearest(name, names)));
}

// The first word that is neither an option nor an option's value.
void CommandLine::refuseUnknownCommand(int argc, char** argv) const {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--log-level" || word == "--color") {
      ++i;
    } else if (word.empty() || word[0] != '-') {
      requireCommand(word);
      return;
    }
  }
}

// For CLI11 there is no value behind "--option=", so it would take the next argument for it.
void CommandLine::refuseMissingValue(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--") return;
    if (word.size() > 3 && word.compare(0, 2, "--") == 0 && word.find('=') == word.size() - 1) {
      throwUsageError("there is no value behind '" + word + "'");
    }
  }
}

void CommandLine::refuse(const CLI::ParseError& error) const {
  std::vector<std::string> names = optionNames(*app_);
  std::string command = "tarn";
  for (const CLI::App* parsed : app_->get_subcommands()) {
    command += " " + parsed->get_name();
    for (const std::string& name : optionNames(*parsed)) names.push_back(name);
  }
  for (const std::string& word : app_->remaining(true)) {
    if (word.empty() || word[0] != '-') continue;
    const std::string option = word.substr(0, word.find('='));
    throwUsageError(withSuggestion(fmt::format("{} has no option '{}'", command, option),
                                   nearest(option, names)));
  }
  throwUsageError(messageOf(error));
}

}  // namespace tarn
