#include <string>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Edit.hpp"
#include "documents/Outcomes.hpp"
#include "documents/documentFile.hpp"
#include "files/InputFile.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "libtarn/util/TarnFactory.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::exceptions::ModelException;

namespace {

struct AddRequest {
  std::string file;
  std::string objectFile;  ///< The document with the objects.
  EditOptions edit;
};

Status addObjects(const AddRequest& request) {
  requireOneStandardInput({request.file, request.objectFile});
  Edit edit(request.file, request.edit);
  Document& document = edit.document();
  const Document objects(request.objectFile);
  LibTarnCmData& cmData = requireCmData(document, request.file);
  Outcomes outcomes(request.file);
  for (const LibTarnManagedObject* object :
       requireCmData(objects, request.objectFile).getLibTarnManagedObjects()) {
    const std::string distName = textOrEmpty(object->getDistName().getText());
    if (cmData.hasLibTarnManagedObject(distName.c_str())) {
      outcomes.addFailure(Status::Conflict, distName, "there is an object of that name");
      continue;
    }
    try {
      cmData.addLibTarnManagedObject(*document.getFactory().createCopy(*object));
      outcomes.addDone(distName, "added");
    } catch (const ModelException& error) {
      outcomes.addFailure(Status::RuleBroken, distName, error.what());
    }
  }
  outcomes.throwIfFailed();
  edit.finish(edit.isDryRun() ? outcomes.count("added") : outcomes.report());
  return Status::Done;
}

}  // namespace

void addAdd(CommandLine& line) {
  auto [options, request] =
      line.add<AddRequest>("add", "Add the objects of another document, all or none", addObjects);
  addFile(options, request.file);
  options.addArgument("OBJECTFILE", request.objectFile, "The document with the objects");
  addTarget(options, request.edit.target);
  addDryRun(options, request.edit.dryRun);
}

}  // namespace tarn
