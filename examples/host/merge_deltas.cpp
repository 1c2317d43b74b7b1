// Applies deltas to a network, one after the other, and says why one is refused.
//
// Usage: merge_deltas NETWORK RESULT DELTA...

#include <libtarn/libtarn.hpp>

#include "files.hpp"

using libtarn::editor::TarnMerge;
using libtarn::model::LibTarnDocument;
using libtarn::model::exceptions::ModelException;

namespace {

// The last line at level ERROR. A host with several threads keeps one for each.
thread_local std::string lastError;

}  // namespace

// The reason why a merge is refused goes to the log, which is the host's.
void libtarn::util::Logger::print(Level level, const char* /*location*/, const char* /*function*/,
                                  const char* message) {
  if (level == Level::ERROR) lastError = message;
}

int main(int argc, char** argv) {
  if (argc < 4) return 64;
  LibTarnDocument network;
  if (network.parse(readText(argv[1]), true) != 0) return 1;

  int status = 0;
  for (int i = 3; i < argc; ++i) {
    // What the network takes over is copied: a delta may go once it has been applied.
    LibTarnDocument delta;
    if (delta.parse(readText(argv[i]), true) != 0) {
      std::cout << argv[i] << ": " << delta.getDiagnostic().message << '\n';
      return 1;
    }
    try {
      if (TarnMerge(network).mergeDocument(delta)) {
        std::cout << argv[i] << ": applied\n";
      } else {
        // All conflicts are looked for before the first change: the network is as it was.
        std::cout << argv[i] << ": refused: " << lastError << '\n';
        status = 3;
      }
    } catch (const ModelException& error) {
      // Even a delta that was loaded with validation may hold elements that cannot be copied, such
      // as an object within an object. The network is as it was.
      std::cout << argv[i] << ": " << error.what() << '\n';
      return 2;
    }
  }
  std::string text;
  libtarn::util::dumpTarnDocument(network, text);
  return writeText(argv[2], text) ? status : 5;
}
