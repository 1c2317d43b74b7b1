#include "CommandLine.hpp"

#include <fmt/format.h>

#include <map>

#include "nearest.hpp"
#include "outputFile.hpp"

namespace tarn {

namespace {

// Deeper trees than people can read would be drawn wider than they are long.
constexpr std::size_t TREE_DEPTH = 64;

const std::map<std::string, HostLog::Level> LOG_LEVELS = {{"debug", HostLog::Level::Debug},
                                                          {"info", HostLog::Level::Info},
                                                          {"error", HostLog::Level::Error},
                                                          {"none", HostLog::Level::None}};
const std::map<std::string, ColorChoice> COLOR_CHOICES = {
    {"auto", ColorChoice::Auto}, {"always", ColorChoice::Always}, {"never", ColorChoice::Never}};
const std::map<std::string, ListFormat> LIST_FORMATS = {{"table", ListFormat::Table},
                                                        {"tsv", ListFormat::Tsv},
                                                        {"json", ListFormat::Json},
                                                        {"dn", ListFormat::Dn}};

// What an option takes and stands for; the words are those of the table.
template <class Value>
CLI::CheckedTransformer oneOf(const std::map<std::string, Value>& words) {
  CLI::CheckedTransformer transformer(words);
  transformer.description("");
  return transformer;
}

CLI::Validator notNegative() { return CLI::Validator(CLI::NonNegativeNumber).description(""); }

void addFile(CLI::App& command, std::string& file) {
  command.add_option("FILE", file, "The document; - is standard input")->required();
}

void addOutput(CLI::App& command, std::string& output) {
  command.add_option("-o,--output", output, "File for the result; - is standard output")
      ->type_name("OUT")
      ->capture_default_str();
}

void addTarget(CLI::App& command, Target& target) {
  addOutput(command, target.output);
  command.add_flag("--in-place", target.inPlace, "Put the result in place of the document")
      ->excludes("--output");
}

void addParameters(CLI::App& command, const std::string& option, PatternOptions& options,
                   const char* form, const char* summary) {
  command.add_option(option, options.parameters, summary)->type_name(form)->allow_extra_args(false);
}

// `prefix` keeps options apart from those of the values, where a command has both.
void addMask(CLI::App& command, const std::string& prefix, PatternOptions& mask) {
  std::vector<CLI::Option*> parts;
  parts.push_back(
      command.add_option("--" + prefix + "class", mask.className, "Of this class")->type_name("C"));
  parts.push_back(
      command.add_option("--dn", mask.distName, "With this text in the name")->type_name("TEXT"));
  parts.push_back(command.add_option("--operation", mask.operation, "With this operation")
                      ->type_name("O")
                      ->check(CLI::IsMember({"create", "delete", "update", "auto"})
                                  .description("create, delete, update or auto")));
  parts.push_back(command.add_option("--" + prefix + "version", mask.version, "Of this version")
                      ->type_name("V"));
  addParameters(command, "--" + prefix + "p", mask, "NAME[=VALUE]",
                "With this parameter; may be repeated");
  parts.push_back(command.get_option("--" + prefix + "p"));
  CLI::Option* const file =
      command.add_option("--mask", mask.file, "That match the first object of this document")
          ->type_name("FILE");
  for (CLI::Option* part : parts) part->excludes(file);
}

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

}  // namespace

CommandLine::CommandLine()
    : app_("Looks at configuration documents, checks, changes and merges them.", "tarn"),
      depth_(TREE_DEPTH) {
  app_.require_subcommand(1);
  app_.fallthrough();  // options of the whole command may stand behind a subcommand, too
  addGeneralOptions();
  addCheck();
  addPrint();
  addList();
  addGet();
  addSet();
  addAdd();
  addRemove();
  addMerge();
  addStats();
  addTree();
  addReport();
  addHelp();
}

CLI::App* CommandLine::addCommand(const char* name, const char* summary,
                                  std::function<Status()> work) {
  CLI::App* const command = app_.add_subcommand(name, summary);
  command->callback([this, work = std::move(work)] { work_ = work; });
  return command;
}

void CommandLine::addGeneralOptions() {
  app_.set_version_flag("--version", "tarn " TARN_VERSION, "Print the version and exit");
  app_.add_option("--log-level", logLevel_,
                  "Write the library's log lines from this level on: debug, info, error, none")
      ->type_name("LEVEL")
      ->transform(oneOf(LOG_LEVELS))
      ->default_str("error");
  app_.add_option("--color", color_, "Colour the output: auto, always, never")
      ->type_name("WHEN")
      ->transform(oneOf(COLOR_CHOICES))
      ->default_str("auto");
}

void CommandLine::addCheck() {
  CLI::App* const check = addCommand("check", "Check documents against the format",
                                     [this] { return checkCommand(check_); });
  check->add_option("FILE", check_.files, "The documents; - is standard input")->required();
  CLI::Option* const all = check->add_flag("--all", check_.all, "Tell every violation");
  check
      ->add_option("--limit", check_.limit,
                   "Most violations to tell for a file; 0 for all that fit 64 MiB")
      ->type_name("N")
      ->check(notNegative())
      ->capture_default_str()
      ->needs(all);
  check->add_flag("--json", check_.json, "Write a JSON object for each file, on a line");
  check->add_option("--jobs", check_.jobs, "Documents to check at a time; 0 for one a core")
      ->type_name("N")
      ->check(notNegative())
      ->capture_default_str();
}

void CommandLine::addPrint() {
  CLI::App* const print = addCommand("print", "Write the printed form of a document", [this] {
    printCommand(file_, output_);
    return Status::Done;
  });
  addFile(*print, file_);
  addOutput(*print, output_);
}

void CommandLine::addList() {
  CLI::App* const list =
      addCommand("list", "List the objects that match, in the order of their names", [this] {
        listCommand(file_, mask_, format_);
        return Status::Done;
      });
  addFile(*list, file_);
  addMask(*list, "", mask_);
  list->add_option("--format", format_, "Form of the list: table, tsv, json, dn")
      ->type_name("FORM")
      ->transform(oneOf(LIST_FORMATS))
      ->default_str("table");
}

void CommandLine::addGet() {
  CLI::App* const get =
      addCommand("get", "Write one object, or the value of a parameter, list or item", [this] {
        getCommand(file_, distName_, name_);
        return Status::Done;
      });
  addFile(*get, file_);
  get->add_option("DN", distName_, "Distinguished name of the object")->required();
  get->add_option("NAME", name_,
                  "Parameter, list, NAME[2] or NAME[2].component (items count from 1), or "
                  "EXTENSION.NAME");
}

void CommandLine::addSet() {
  CLI::App* const set = addCommand(
      "set", "Change the objects that match; --class, --version and --p are the new values",
      [this] {
        setCommand(file_, mask_, values_, target_);
        return Status::Done;
      });
  addFile(*set, file_);
  addMask(*set, "mask-", mask_);
  CLI::Option* const className =
      set->add_option("--class", values_.className, "The new class")->type_name("C");
  CLI::Option* const version =
      set->add_option("--version", values_.version, "The new version")->type_name("V");
  addParameters(*set, "--p", values_, "NAME=VALUE", "A new value; may be repeated");
  set->add_option("--values", values_.file, "The new values: the first object of this document")
      ->type_name("FILE")
      ->excludes(className)
      ->excludes(version)
      ->excludes("--p");
  addTarget(*set, target_);
}

void CommandLine::addAdd() {
  CLI::App* const add =
      addCommand("add", "Add the objects of another document, all or none", [this] {
        tarn::addCommand(file_, objectFile_, target_);
        return Status::Done;
      });
  addFile(*add, file_);
  add->add_option("OBJECTFILE", objectFile_, "The document with the objects")->required();
  addTarget(*add, target_);
}

void CommandLine::addRemove() {
  CLI::App* const remove = addCommand("remove", "Remove objects, all or none", [this] {
    removeCommand(file_, distNames_, target_);
    return Status::Done;
  });
  addFile(*remove, file_);
  remove->add_option("DN", distNames_, "Distinguished names of the objects")->required();
  addTarget(*remove, target_);
}

void CommandLine::addMerge() {
  CLI::App* const merge = addCommand("merge", "Apply deltas to a document, in their order", [this] {
    mergeCommand(merge_);
    return Status::Done;
  });
  merge->add_option("SOURCE", merge_.source, "The document; - is standard input")->required();
  merge->add_option("DELTA", merge_.deltas, "The deltas")->required();
  addTarget(*merge, merge_.target);
  merge->add_flag("--check-only", merge_.checkOnly, "Write nothing");
  merge->add_flag("--validate", merge_.validate, "Validate source, deltas and result");
}

void CommandLine::addStats() {
  CLI::App* const stats = addCommand("stats", "Tell figures of a document", [this] {
    statsCommand(file_, json_);
    return Status::Done;
  });
  addFile(*stats, file_);
  stats->add_flag("--json", json_, "Write them as JSON");
}

void CommandLine::addTree() {
  CLI::App* const tree = addCommand("tree", "Draw the tree that the objects' names spell", [this] {
    treeCommand(file_, mask_.distName, depth_);
    return Status::Done;
  });
  addFile(*tree, file_);
  tree->add_option("--depth", depth_, "Segments of the names to draw")
      ->type_name("N")
      ->check(CLI::Validator(CLI::PositiveNumber).description(""))
      ->capture_default_str();
  tree->add_option("--dn", mask_.distName, "Objects with this text in the name")->type_name("TEXT");
}

void CommandLine::addReport() {
  CLI::App* const report =
      addCommand("report", "Write a page to look through a document in a browser", [this] {
        reportCommand(file_, output_);
        return Status::Done;
      });
  addFile(*report, file_);
  report->add_option("-o,--output", output_, "The page, HTML; - is standard output")
      ->type_name("OUT.html")
      ->required();
}

void CommandLine::addHelp() {
  CLI::App* const help = addCommand("help", "Explain a command", [this] {
    if (name_.empty()) {
      // help() of the application would be that of this command.
      writeOutput(app_.get_formatter()->make_help(&app_, "tarn", CLI::AppFormatMode::Normal));
      return Status::Done;
    }
    const CLI::App* const command = findCommand(name_);
    if (!command) {
      throwUsageError(withSuggestion("no command '" + name_ + "'", nearestCommand(name_)));
    }
    writeOutput(command->help("tarn"));
    return Status::Done;
  });
  help->add_option("COMMAND", name_, "The command");
}

Status CommandLine::run(int argc, char** argv) {
  refuseUnknownCommand(argc, argv);
  try {
    app_.parse(argc, argv);
  } catch (const CLI::Success& success) {  // help or version was asked for
    app_.exit(success);
    return Status::Done;
  } catch (const CLI::ParseError& error) {
    refuse(error);
  }
  HostLog::setLevel(logLevel_);
  setColorChoice(color_);
  return work_();
}

const CLI::App* CommandLine::findCommand(const std::string& name) const {
  for (const CLI::App* command : app_.get_subcommands(nullptr)) {
    if (command->get_name() == name) return command;
  }
  return nullptr;
}

std::string CommandLine::nearestCommand(const std::string& word) const {
  std::vector<std::string> names;
  for (const CLI::App* command : app_.get_subcommands(nullptr))
    names.push_back(command->get_name());
  return nearest(word, names);
}

// The first word that is neither an option nor an option's value.
void CommandLine::refuseUnknownCommand(int argc, char** argv) const {
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--log-level" || word == "--color") {
      ++i;
    } else if (word.empty() || word[0] != '-') {
      if (findCommand(word)) return;
      throwUsageError(withSuggestion("no command '" + word + "'", nearestCommand(word)));
    }
  }
}

void CommandLine::refuse(const CLI::ParseError& error) const {
  std::vector<std::string> names = optionNames(app_);
  std::string command = "tarn";
  for (const CLI::App* parsed : app_.get_subcommands()) {
    command += " " + parsed->get_name();
    for (const std::string& name : optionNames(*parsed)) names.push_back(name);
  }
  for (const std::string& word : app_.remaining(true)) {
    if (word.empty() || word[0] != '-') continue;
    const std::string option = word.substr(0, word.find('='));
    throwUsageError(withSuggestion(fmt::format("{} has no option '{}'", command, option),
                                   nearest(option, names)));
  }
  std::string message = error.what();
  message = message.substr(0, message.find('\n'));
  throwUsageError(message);
}

}  // namespace tarn
