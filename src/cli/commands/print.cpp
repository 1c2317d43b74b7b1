#include <string>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/documentFile.hpp"

namespace tarn {

namespace {

struct PrintRequest {
  std::string file;
  Target target;
};

Status printDocument(const PrintRequest& request) {
  Destination destination(request.file, request.target);
  Document document(request.file);
  writeResult(document, destination, "");
  return Status::Done;
}

}  // namespace

void addPrint(CommandLine& line) {
  auto [options, request] =
      line.add<PrintRequest>("print", "Write the printed form of a document", printDocument);
  addFile(options, request.file);
  addOutput(options, request.target.output);
}

}  // namespace tarn
