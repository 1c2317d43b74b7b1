#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "HostLog.hpp"
#include "commands.hpp"
#include "terminal.hpp"

namespace tarn {

/// The commands and options of `tarn`, and what a command line asks for.
class CommandLine {
 public:
  CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /// Does what the arguments say. Throws CommandError; returns the status otherwise.
  Status run(int argc, char** argv);

 private:
  void addGeneralOptions();
  void addCheck();
  void addPrint();
  void addList();
  void addGet();
  void addSet();
  void addAdd();
  void addRemove();
  void addMerge();
  void addStats();
  void addTree();
  void addReport();
  void addHelp();

  CLI::App* addCommand(const char* name, const char* summary, std::function<Status()> work);
  const CLI::App* findCommand(const std::string& name) const;
  std::string nearestCommand(const std::string& word) const;
  void refuseUnknownCommand(int argc, char** argv) const;
  [[noreturn]] void refuse(const CLI::ParseError& error) const;

  CLI::App app_;
  std::function<Status()> work_;  // of the command that was parsed
  HostLog::Level logLevel_ = HostLog::Level::Error;
  ColorChoice color_ = ColorChoice::Auto;

  CheckRequest check_;
  MergeRequest merge_;
  std::string file_;
  std::string output_ = "-";
  Target target_;
  PatternOptions mask_;
  PatternOptions values_;
  ListFormat format_ = ListFormat::Table;
  std::string distName_;
  std::string name_;
  std::vector<std::string> distNames_;
  std::string objectFile_;
  std::size_t depth_;
  bool json_ = false;
};

}  // namespace tarn
