#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "CommandError.hpp"
#include "Options.hpp"
#include "output/HostLog.hpp"
#include "output/terminal.hpp"

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace tarn {

/// The commands of `tarn`, and what a command line asks for.
class CommandLine {
 public:
  CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;
  ~CommandLine();

  /// A command that has been added. Its options fill its request, which lives as long as the
  /// command line.
  template <class Request>
  struct Added {
    Options options;
    Request& request;
  };

  /// Adds the command `name`. When a command line asks for it, `work` is called with its request
  /// and returns the status, or throws CommandError.
  template <class Request, class Work>
  Added<Request> add(const char* name, const char* summary, Work work) {
    const auto request = std::make_shared<Request>();
    return {addCommand(name, summary, [request, work] { return work(*request); }), *request};
  }

  /// Parses the arguments and runs the command. Returns the exit status, or throws CommandError.
  Status run(int argc, char** argv);

  /// Returns the help of a command, or of `tarn` for "". Throws CommandError for an unknown
  /// command.
  std::string helpOn(const std::string& command) const;

 private:
  Options addCommand(const char* name, const char* summary, std::function<Status()> work);
  void addGeneralOptions();
  const CLI::App* findCommand(const std::string& name) const;
  const CLI::App& requireCommand(const std::string& name) const;
  void refuseUnknownCommand(int argc, char** argv) const;
  static void refuseMissingValue(int argc, char** argv);
  [[noreturn]] void refuse(const CLI::ParseError& error) const;

  std::unique_ptr<CLI::App> app_;
  std::function<Status()> work_;  // of the command that was parsed
  HostLog::Level logLevel_ = HostLog::Level::Error;
  ColorChoice color_ = ColorChoice::Auto;
};

}  // namespace tarn
