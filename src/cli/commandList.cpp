#include "commandList.hpp"

// The function that adds each command, in the order of the help. Each is defined in a file of its
// own in the folder commands.
#define TARN_COMMANDS(COMMAND) \
  COMMAND(addCheck)            \
  COMMAND(addPrint)            \
  COMMAND(addList)             \
  COMMAND(addGet)              \
  COMMAND(addSet)              \
  COMMAND(addUnset)            \
  COMMAND(addApply)            \
  COMMAND(addAdd)              \
  COMMAND(addRemove)           \
  COMMAND(addMerge)            \
  COMMAND(addStats)            \
  COMMAND(addTree)             \
  COMMAND(addReport)           \
  COMMAND(addHelp)

namespace tarn {

#define TARN_DECLARE(add) void add(CommandLine& line);
TARN_COMMANDS(TARN_DECLARE)
#undef TARN_DECLARE

void addAllCommands(CommandLine& line) {
#define TARN_CALL(add) add(line);
  TARN_COMMANDS(TARN_CALL)
#undef TARN_CALL
}

}  // namespace tarn
