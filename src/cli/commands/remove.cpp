#include <string>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Outcomes.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnCmData.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;

namespace {

struct RemoveRequest {
  std::string file;
  std::vector<std::string> distNames;
  Target target;
};

Status removeObjects(const RemoveRequest& request) {
  Destination destination(request.file, request.target);
  Document document(request.file);
  LibTarnCmData& cmData = requireCmData(document, request.file);
  Outcomes outcomes(request.file);
  for (const std::string& distName : request.distNames) {
    if (cmData.removeLibTarnManagedObject(distName.c_str()) == 0) {
      outcomes.addDone(distName, "removed");
    } else {
      outcomes.addFailure(Status::NothingMatched, distName, "no such object");
    }
  }
  outcomes.throwIfFailed();
  writeResult(document, destination, outcomes.report());
  return Status::Done;
}

}  // namespace

void addRemove(CommandLine& line) {
  auto [options, request] =
      line.add<RemoveRequest>("remove", "Remove objects, all or none", removeObjects);
  addFile(options, request.file);
  options.addArguments("DN", request.distNames, "Distinguished names of the objects");
  addTarget(options, request.target);
}

}  // namespace tarn
