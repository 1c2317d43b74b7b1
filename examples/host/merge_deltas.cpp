// Applies deltas to a network, one after the other, and reports why one is refused.
//
// Usage: merge_deltas NETWORK RESULT DELTA...

#include <libtarn/libtarn.hpp>

#include "files.hpp"

using libtarn::editor::TarnMerge;
using libtarn::model::LibTarnDocument;
using libtarn::model::exceptions::ModelException;

int main(int argc, char** argv) {
  if (argc < 4) return 64;
  LibTarnDocument network;
  if (network.parse(readText(argv[1]), true) != 0) return 1;

  int status = 0;
  for (int i = 3; i < argc; ++i) {
    // The merge copies what the network gets, so a delta may be destroyed once it has been applied.
    LibTarnDocument delta;
    if (delta.parse(readText(argv[i]), true) != 0) {
      std::cout << argv[i] << ": " << delta.getDiagnostic().message << '\n';
      return 1;
    }
    try {
      TarnMerge merge(network);
      if (merge.mergeDocument(delta)) {
        std::cout << argv[i] << ": applied\n";
      } else {
        // A conflict. The network is unchanged.
        std::cout << argv[i] << ": refused: " << merge.getDiagnostic().message << '\n';
        status = 3;
      }
    } catch (const ModelException& error) {
      // Validation ignores elements where the format has none, such as an object within an object
      // or items within an item, and elements with abbreviated tags. A merge copies them as
      // elements of the model, which fails on a duplicate name or an unknown operation. The network
      // is unchanged.
      std::cout << argv[i] << ": " << error.what() << '\n';
      return 2;
    }
  }
  std::string text;
  libtarn::util::dumpTarnDocument(network, text);
  return writeText(argv[2], text) ? status : 5;
}
