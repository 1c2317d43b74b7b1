#include "commands.hpp"

namespace tarn {

void printCommand(const std::string& path, const std::string& output) {
  libtarn::model::LibTarnDocument document(libtarn::model::OutOfMemory::Throw);
  loadDocument(path, document);
  writeResult(document, path, Target{output, false}, "");
}

}  // namespace tarn
