#include <string>

#include "CommandLine.hpp"
#include "output/outputFile.hpp"

namespace tarn {

namespace {

struct HelpRequest {
  std::string command;  ///< "" for all.
};

}  // namespace

void addHelp(CommandLine& line) {
  const auto explain = [&line](const HelpRequest& request) {
    writeOutput(line.helpOn(request.command));
    return Status::Done;
  };
  auto [options, request] = line.add<HelpRequest>("help", "Explain a command", explain);
  options.addOptionalArgument("COMMAND", request.command, "The command");
}

}  // namespace tarn
