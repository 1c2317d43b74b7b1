#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "HostLog.hpp"
#include "commands.hpp"
#include "documentFile.hpp"
#include "editor/TarnMerge.hpp"
#include "model/LibTarnCmData.hpp"
#include "model/LibTarnDocumentInternal.hpp"
#include "model/LibTarnExtension.hpp"
#include "model/LibTarnHeader.hpp"
#include "model/List.hpp"
#include "model/Log.hpp"
#include "model/Scalar.hpp"
#include "model/Structure.hpp"
#include "model/TarnDomDocument.hpp"
#include "model/exceptions/ModelException.hpp"
#include "outputFile.hpp"
#include "printable.hpp"
#include "terminal.hpp"

namespace tarn {

using libtarn::editor::TarnMerge;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using Operation = LibTarnManagedObject::Operation;

namespace {

void load(const std::string& path, LibTarnDocument& document, bool validate) {
  if (validate) {
    loadValidDocument(path, document);
  } else {
    loadDocument(path, document);
  }
}

// A delta that was merged has one of the three operations in each object.
std::string summary(const LibTarnDocument& delta) {
  std::size_t created = 0;
  std::size_t updated = 0;
  std::size_t deleted = 0;
  for (const LibTarnManagedObject* object : delta.getLibTarnCmData()->getLibTarnManagedObjects()) {
    const Operation operation = object->getOperation();
    ++(operation == Operation::CREATE   ? created
       : operation == Operation::DELETE ? deleted
                                        : updated);
  }
  return std::to_string(created) + " created, " + std::to_string(updated) + " updated, " +
         std::to_string(deleted) + " deleted";
}

bool isTag(const std::string& name) {
  using namespace libtarn::model;
  for (const char* const tag : {LibTarnCmData::TAG_NAME, LibTarnHeader::TAG_NAME, Log::TAG_NAME,
                                LibTarnManagedObject::TAG_NAME, LibTarnExtension::TAG_NAME,
                                List::TAG_NAME, Structure::TAG_NAME, Scalar::TAG_NAME}) {
    if (name == tag) return true;
  }
  return false;
}

// Whether the delta has elements whose tags are beginnings of those that the format has. Their
// copies have the whole tags, and so have to follow rules that they did not.
bool hasAbbreviatedTags(const LibTarnDocument& document) {
  libDomXml::IDomElement* const top = document.getItsTarnDomDocument()->getRootElement();
  libDomXml::IDomElement* element = top;
  for (;;) {
    if (libDomXml::IDomElement* const child = element->getFirstChild(nullptr)) {
      element = child;
    } else {
      while (element != top && !element->nextSibling(nullptr)) element = element->getParent();
      if (element == top) return false;
      element = element->nextSibling(nullptr);
    }
    if (!isTag(element->getTagName())) return true;
  }
}

// Why the library refused is in its log only.
[[noreturn]] void throwRefusal(const MergeRequest& request, const std::string& deltaPath,
                               const LibTarnDocument& source, const LibTarnDocument& delta) {
  const std::string reason = HostLog::takeError();
  if (!source.getLibTarnCmData()) {
    throw CommandError(Status::RuleBroken, request.source, reason);
  }
  throw CommandError(delta.getLibTarnCmData() ? Status::Conflict : Status::RuleBroken, deltaPath,
                     reason);
}

// Two documents of one file would be merged, but no user means that.
void refuseSameFile(const std::string& source, const std::string& delta) {
  std::error_code ignored;
  if (std::filesystem::equivalent(source, delta, ignored)) {
    throw CommandError(Status::Conflict, delta, "Source and delta are the same document");
  }
}

/// What a delta did.
struct Applied {
  std::string summary;      // a line
  bool hasAbbreviatedTags;  // in what it brought
};

Applied applyDelta(const MergeRequest& request, const std::string& path, LibTarnDocument& source) {
  refuseSameFile(request.source, path);
  LibTarnDocument delta(libtarn::model::OutOfMemory::Throw);
  load(path, delta, request.validate);
  try {
    if (!TarnMerge(source).mergeDocument(delta)) throwRefusal(request, path, source, delta);
  } catch (const libtarn::model::exceptions::ModelException& error) {
    throw CommandError(Status::RuleBroken, path, error.what());
  }
  return {printable(path) + ": " + summary(delta) + "\n", hasAbbreviatedTags(delta)};
}

}  // namespace

void mergeCommand(const MergeRequest& request) {
  std::optional<Destination> destination;
  if (!request.checkOnly) destination.emplace(request.source, request.target);
  LibTarnDocument source(libtarn::model::OutOfMemory::Throw);
  load(request.source, source, request.validate);
  std::string summaries;
  bool mayHaveBecomeInvalid = false;
  for (const std::string& path : request.deltas) {
    const Applied applied = applyDelta(request, path, source);
    summaries += applied.summary;
    mayHaveBecomeInvalid = mayHaveBecomeInvalid || applied.hasAbbreviatedTags;
  }
  if ((request.validate || mayHaveBecomeInvalid) && source.validate() != 0) {
    HostLog::takeError();
    const std::string message = "merged document: " + source.getDiagnostic().message;
    if (request.validate) throw CommandError(Status::RuleBroken, request.source, message);
    tellNote(request.source, message);
  }
  if (!destination) return writeOutput(summaries);
  writeResult(source, *destination, summaries);
}

}  // namespace tarn
