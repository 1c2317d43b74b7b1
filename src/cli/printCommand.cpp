#include "commands.hpp"

namespace tarn {

void printCommand(const std::string& path, const std::string& output) {
  Destination destination(path, Target{output, false});
  libtarn::model::LibTarnDocument document;
  loadDocument(path, document);
  writeResult(document, destination, "");
}

}  // namespace tarn
