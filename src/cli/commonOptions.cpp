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
  options.addOptionalText(
      "--in-place", "[=SUFFIX]", target.inPlace, target.suffix,
      "Replace the document with the result; with SUFFIX keep the old file under "
      "its name and SUFFIX");
  options.exclude("--in-place", "--output");
}

void addSelection(Options& options, const std::string& prefix, Selection& selection) {
  const std::string className = "--" + prefix + "class";
  const std::string version = "--" + prefix + "version";
  const std::string parameter = "--" + prefix + "p";
  options.addText(className, "C", selection.className, "Of this class");
  options.addText("--dn", "TEXT", selection.distName, "With this text in the name");
  options.addWord("--operation", "O", selection.operation, {"create", "delete", "update", "auto"},
                  "With this operation");
  options.addText(version, "V", selection.version, "Of this version");
  options.addTexts(parameter, "NAME[=VALUE]", selection.parameters,
                   "With this parameter; may be repeated");
  options.addText("--mask", "FILE", selection.file, "That match the first object of this document");
  for (const std::string& part :
       {className, std::string("--dn"), std::string("--operation"), version, parameter}) {
    options.exclude(part, "--mask");
  }
}

}  // namespace tarn
