#include "commands.hpp"

namespace tarn {

void printCommand(const std::string& path, const std::string& output) {
  Destination destination(path, Target{output, false});
  libtarn::model::LibTarnDocument document(libtarn::model::OutOfMemory::Throw);
  loadDocument(path, document);
  writeResult(document, destination, "");
}

}  // namespace tarn
