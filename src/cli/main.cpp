// The command `tarn`: a host of the library that works on documents in files.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <string>

#include "CommandError.hpp"
#include "commands.hpp"

namespace {

using tarn::CommandError;
using tarn::ObjectMask;
using tarn::Status;

int exitStatus(Status status) { return static_cast<int>(status); }

int run(int argc, char** argv) {
  CLI::App app("Looks at configuration documents.", "tarn");
  app.require_subcommand(1);

  std::string file;
  CLI::App* const print = app.add_subcommand("print", "Write the printed form of a document");
  print->add_option("FILE", file, "The document")->required();

  ObjectMask mask;
  CLI::App* const list = app.add_subcommand(
      "list", "List managed objects that match: name, tab, class; one a line, in order of names");
  list->add_option("FILE", file, "The document")->required();
  list->add_option("--class", mask.className, "Objects of this class")->type_name("CLASS");
  list->add_option("--dn", mask.distName, "Objects with this text in their name")
      ->type_name("TEXT");
  list->add_option("--p", mask.parameters, "Objects with this parameter; may be repeated")
      ->type_name("NAME=VALUE")
      ->allow_extra_args(false);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? exitStatus(Status::Done) : exitStatus(Status::UsageError);
  }
  if (print->parsed()) tarn::printCommand(file);
  if (list->parsed()) tarn::listCommand(file, mask);
  return exitStatus(Status::Done);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const CommandError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return exitStatus(error.status());
  } catch (const std::exception& error) {
    std::fprintf(stderr, "tarn: error: %s\n", error.what());
    return exitStatus(Status::FileError);
  }
}
