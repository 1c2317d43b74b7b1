#pragma once

namespace tarn {

class CommandLine;

/// Adds every command to `line`, in the order in which the help lists them.
void addAllCommands(CommandLine& line);

}  // namespace tarn
