// The command `tarn`: a host of the library that works on documents in files.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <map>
#include <string>

#include "CommandError.hpp"
#include "HostLog.hpp"
#include "commands.hpp"

namespace {

using tarn::CheckRequest;
using tarn::CommandError;
using tarn::HostLog;
using tarn::MergeRequest;
using tarn::ObjectMask;
using tarn::Status;

const std::map<std::string, HostLog::Level> LOG_LEVELS = {{"debug", HostLog::Level::Debug},
                                                          {"info", HostLog::Level::Info},
                                                          {"error", HostLog::Level::Error},
                                                          {"none", HostLog::Level::None}};

CLI::App* addCheck(CLI::App& app, CheckRequest& request) {
  CLI::App* const check = app.add_subcommand("check", "Check documents against the format");
  check->add_option("FILE", request.files, "The documents")->required();
  CLI::Option* const all = check->add_flag("--all", request.all, "Tell every violation");
  check->add_option("--limit", request.limit, "Most violations to tell for a file; 0 for all")
      ->type_name("N")
      ->check(CLI::Validator(CLI::NonNegativeNumber).description(""))
      ->capture_default_str()
      ->needs(all);
  return check;
}

CLI::App* addMerge(CLI::App& app, MergeRequest& request) {
  CLI::App* const merge = app.add_subcommand("merge", "Apply deltas to a document, in their order");
  merge->add_option("SOURCE", request.source, "The document")->required();
  merge->add_option("DELTA", request.deltas, "The deltas")->required();
  CLI::Option* const output =
      merge->add_option("-o,--output", request.output, "File for the result; - is standard output")
          ->type_name("OUT");
  merge->add_flag("--in-place", request.inPlace, "Put the result in place of SOURCE")
      ->excludes(output);
  merge->add_flag("--check-only", request.checkOnly, "Write nothing");
  merge->add_flag("--validate", request.validate, "Validate source, deltas and result");
  return merge;
}

CLI::App* addPrint(CLI::App& app, std::string& file) {
  CLI::App* const print = app.add_subcommand("print", "Write the printed form of a document");
  print->add_option("FILE", file, "The document")->required();
  return print;
}

CLI::App* addList(CLI::App& app, std::string& file, ObjectMask& mask) {
  CLI::App* const list = app.add_subcommand(
      "list", "List managed objects that match: name, tab, class; one a line, in order of names");
  list->add_option("FILE", file, "The document")->required();
  list->add_option("--class", mask.className, "Objects of this class")->type_name("CLASS");
  list->add_option("--dn", mask.distName, "Objects with this text in their name")
      ->type_name("TEXT");
  list->add_option("--p", mask.parameters, "Objects with this parameter; may be repeated")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);
  return list;
}

Status run(int argc, char** argv) {
  CLI::App app("Looks at configuration documents, checks and merges them.", "tarn");
  app.require_subcommand(1);
  app.fallthrough();  // Options of the whole command may stand behind a subcommand, too.
  HostLog::Level logLevel = HostLog::Level::Error;
  app.add_option("--log-level", logLevel, "Write the library's log lines from this level on")
      ->type_name("LEVEL")
      ->transform(CLI::CheckedTransformer(LOG_LEVELS).description("error, info, debug or none"));
  CheckRequest checkRequest;
  const CLI::App* const check = addCheck(app, checkRequest);
  MergeRequest mergeRequest;
  const CLI::App* const merge = addMerge(app, mergeRequest);
  std::string file;
  const CLI::App* const print = addPrint(app, file);
  ObjectMask mask;
  const CLI::App* const list = addList(app, file, mask);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? Status::Done : Status::UsageError;
  }
  HostLog::setLevel(logLevel);
  if (check->parsed()) return tarn::checkCommand(checkRequest);
  if (merge->parsed()) tarn::mergeCommand(mergeRequest);
  if (print->parsed()) tarn::printCommand(file);
  if (list->parsed()) tarn::listCommand(file, mask);
  return Status::Done;
}

Status runAndTell(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const CommandError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return error.status();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tarn: error: %s\n", error.what());
    return Status::FileError;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const Status status = runAndTell(argc, argv);
  HostLog::flush();
  return static_cast<int>(status);
}
