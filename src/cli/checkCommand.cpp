#include <algorithm>
#include <cstdio>
#include <vector>

#include "commands.hpp"
#include "documentFile.hpp"
#include "model/LibTarnDocumentInternal.hpp"
#include "model/TarnDomDocument.hpp"
#include "model/validation/Validator.hpp"
#include "model/validation/Violation.hpp"

namespace tarn {

using libtarn::model::LibTarnDocument;
using libtarn::model::validation::Validator;
using libtarn::model::validation::Violation;

namespace {

void writeError(const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); }

void tellViolations(const std::string& path, const std::vector<Violation>& violations,
                    std::size_t count) {
  for (const Violation& violation : violations) writeError(errorLine(path, violation.message));
  if (const std::size_t leftOut = count - violations.size()) {
    writeError(errorLine(path, std::to_string(leftOut) + " more violations"));
  }
}

// True when the document in `path` breaks no rule.
bool checkAllRules(const std::string& path, std::size_t limit) {
  LibTarnDocument document;
  loadDocument(path, document);
  std::vector<Violation> violations;
  Validator validator(&violations, limit == 0 ? Validator::NO_LIMIT : limit);
  document.getItsTarnDomDocument()->getRootElement()->accept(validator);
  tellViolations(path, violations, validator.getViolationCount());
  return violations.empty();
}

Status checkFile(const std::string& path, const CheckRequest& request) {
  try {
    if (request.all) {
      if (!checkAllRules(path, request.limit)) return Status::RuleBroken;
    } else {
      LibTarnDocument document;
      loadValidDocument(path, document);
    }
  } catch (const CommandError& error) {
    writeError(error.what());
    return error.status();
  }
  writeOutput(path + ": ok\n");
  return Status::Done;
}

}  // namespace

Status checkCommand(const CheckRequest& request) {
  Status highest = Status::Done;
  for (const std::string& path : request.files) {
    highest = std::max(highest, checkFile(path, request));
  }
  return highest;
}

}  // namespace tarn
