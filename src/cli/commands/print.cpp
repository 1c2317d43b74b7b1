#include <optional>
#include <string>

#include "CommandError.hpp"
#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/documentFile.hpp"
#include "documents/sortedText.hpp"
#include "documents/writtenText.hpp"

namespace tarn {

namespace {

struct PrintRequest {
  std::string file;
  Target target;
  bool sort = false;
};

Status printDocument(const PrintRequest& request) {
  Destination destination(request.file, request.target);
  Document document(request.file);
  const std::string text = writtenText(document, destination.name());
  const std::optional<std::string> sorted = request.sort ? sortedText(text) : std::nullopt;
  if (request.sort && !sorted) {
    throw CommandError(Status::Malformed, request.file, "cannot be sorted");
  }
  writeResult(sorted ? *sorted : text, destination, "");
  return Status::Done;
}

}  // namespace

void addPrint(CommandLine& line) {
  auto [options, request] =
      line.add<PrintRequest>("print", "Write the printed form of a document", printDocument);
  addFile(options, request.file);
  addOutput(options, request.target.output);
  options.addFlag("--sort", request.sort,
                  "Order objects, parameters and attributes by name: the normal form");
}

}  // namespace tarn
