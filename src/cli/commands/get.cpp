#include <string>
#include <variant>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/ValuePath.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/util/dumpElement.hpp"
#include "output/outputFile.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;

namespace {

struct GetRequest {
  std::string file;
  std::string distName;
  std::vector<std::string> names;  ///< Of a value in the object; none for the whole object.
};

// Not indented, although it stands in a document.
std::string textOf(const LibTarnManagedObject& object) {
  std::string text;
  libtarn::util::dumpElement(object, text, 0);
  return text;
}

Status getValue(const GetRequest& request) {
  if (request.names.size() > 1) throwUsageError("tarn get takes one NAME");
  if (!request.names.empty() && request.names.front().empty()) {
    throwUsageError("the NAME is empty");
  }
  const Document document(request.file);
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  const LibTarnManagedObject* const object =
      cmData ? cmData->getLibTarnManagedObject(request.distName.c_str()) : nullptr;
  const std::string subject = subjectOf(request.file, request.distName);
  if (!object) throw CommandError(Status::NothingMatched, subject, "no such object");
  if (request.names.empty()) {
    writeOutput(textOf(*object));
    return Status::Done;
  }
  const std::string& name = request.names.front();
  const ValuePath::Place place = ValuePath(name).find(*object);
  if (std::holds_alternative<std::monostate>(place)) {
    throw CommandError(Status::NothingMatched, subject, "nothing named '" + name + "'");
  }
  const bool isSingle = std::holds_alternative<libtarn::model::Scalar*>(place);
  writeOutput(textAt(place) + (isSingle ? "\n" : ""));
  return Status::Done;
}

}  // namespace

void addGet(CommandLine& line) {
  auto [options, request] = line.add<GetRequest>(
      "get", "Write one object, or the value of a parameter, list or item", getValue);
  addFile(options, request.file);
  options.addArgument("DN", request.distName, "Distinguished name of the object");
  options.addOptionalArguments(
      "NAME", request.names,
      "Parameter, list, NAME[2] or NAME[2].component (items count from 1), "
      "or EXTENSION.NAME");
}

}  // namespace tarn
