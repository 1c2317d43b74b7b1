#include "commonOptions.hpp"

namespace tarn {

void addFile(Options& options, std::string& file) {
  options.addArgument("FILE", file, "The document; - is standard input");
}

void addOutput(Options& options, std::string& output) {
  options.addText("-o,--output", "OUT", output, "File for the result; - is standard output");
  options.showDefault("--output");
}

void addTarget(Options& options, Target& target) {
  addOutput(options, target.output);
  options.addFlagOrText("--in-place", "[=SUFFIX]", target.inPlace, target.suffix,
                        "Replace the document with the result; with SUFFIX keep the old file under "
                        "its name and SUFFIX");
  options.exclude("--in-place", "--output");
}

void addDryRun(Options& options, DryRun& dryRun) {
  options.addFlag("--dry-run", dryRun.isAsked, "Show every change and write nothing");
  options.addFlag("--json", dryRun.json, "With --dry-run: an object in JSON for each change");
  options.allowOnlyWithAny("--json", {"--dry-run"});
}

void addEdit(Options& options, EditOptions& edit) {
  addTarget(options, edit.target);
  addDryRun(options, edit.dryRun);
  options.addFlag("--keep-layout", edit.keepLayout,
                  "Leave the text as it is where nothing changes, with its comments");
  options.addFlag("--yes", edit.yes, "Do not ask before more than 1,000 objects are changed");
}

void addSelectionForChange(Options& options, Selection& selection, EditOptions& edit) {
  addSelection(options, selection);
  options.addFlag("--everything", edit.everything, "Select all objects");
}

void addSelection(Options& options, Selection& selection) {
  options.addTexts("--class", "C", selection.classes, "Of this class");
  options.addTexts("--dn", "DN", selection.distNames, "With exactly this name");
  options.addText("--dns-from", "FILE", selection.distNamesFile,
                  "With a name that this file lists; - is standard input");
  options.addTexts("--under", "DN", selection.above, "Of this name and all below it");
  options.addTexts("--dn-has", "TEXT", selection.nameParts, "With this text in the name");
  options.addTexts("--match", "GLOB", selection.globs,
                   "With a name that matches; * and ? match no /");
  options.addTexts("--p", "CONDITION", selection.conditions,
                   "With such a value: NAME, NAME=VALUE, also != < <= > >= ~");
  options.addTexts("--version", "V", selection.versions, "Of this version");
  options.addWords("--operation", "O", selection.operations,
                   {"create", "delete", "update", "auto", "none"}, "With this operation");
  options.addText("--mask", "FILE", selection.maskFile,
                  "That match the first object of this document");
  options.addFlag("--invert", selection.invert, "Select what the options do not");
}

void addNameOrder(Options& options, bool& byteOrder) {
  options.addFlag("--byte-order", byteOrder, "Order names by their bytes: SITE-10 before SITE-2");
}

}  // namespace tarn
