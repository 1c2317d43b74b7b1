#include "documents/Finding.hpp"

#include <new>
#include <stdexcept>

#include "documents/documentFile.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "output/HostLog.hpp"

namespace tarn {

using libtarn::model::Diagnostic;
using libtarn::model::LibTarnDocument;
using libtarn::model::validation::Validator;

namespace {

// Limits the messages and paths of a file's violations, which could otherwise grow with the square
// of the file's size.
constexpr std::size_t MOST_VIOLATION_BYTES = std::size_t{64} << 20U;

// Allocates no memory.
Finding withoutMemory() {
  HostLog::drop();
  Finding finding;
  finding.status = Status::FileError;
  return finding;
}

void collect(Document& document, std::size_t limit, Finding& finding) {
  const int result =
      document.validate(&finding.violations, limit, MOST_VIOLATION_BYTES, &finding.violationCount);
  if (result == 0) return;
  HostLog::takeError();  // the violations hold the same message
  finding.status = Status::RuleBroken;
}

// Not every error has the path of the element. To find it costs a second walk.
void findPath(Document& document, Finding& finding) {
  Finding first;
  collect(document, 1, first);
  const bool isThatOne =
      !first.violations.empty() && first.violations.front().message == finding.error->message();
  if (isThatOne) finding.path = first.violations.front().path;
}

// Most files are valid, and the static validate() shows that without a document. Log lines and
// paths of violations need a document.
bool isValid(TextFile& file, const CheckScope& scope) {
  if (HostLog::isAskedFor()) return false;
  const Diagnostic found = LibTarnDocument::validate([&file] { return file.read(); });
  const bool isDocumentWanted = scope.all || scope.wantsPath;
  if (found.code != 0 && !isDocumentWanted) throwRefused(file, found);
  HostLog::takeError();
  return found.code == 0;
}

Finding checkInMemory(const std::string& path, const CheckScope& scope) {
  Finding finding;
  Document document;
  try {
    TextFile file(path);
    if (isValid(file, scope)) {
      // Nothing to be reported.
    } else if (scope.all) {
      loadDocument(file, document);
      collect(document, scope.limit == 0 ? Validator::NO_LIMIT : scope.limit, finding);
    } else {
      loadDocument(file, document, Rules::Checked);
    }
  } catch (const CommandError& error) {
    finding.status = error.status();
    finding.error = error;
    if (scope.wantsPath && error.status() == Status::RuleBroken) findPath(document, finding);
  }
  HostLog::flush();
  HostLog::drop();  // threads end without the held line
  return finding;
}

}  // namespace

// When one file needs too much memory, the others are validated all the same.
Finding checkFile(const std::string& path, const CheckScope& scope) {
  try {
    return checkInMemory(path, scope);
  } catch (const std::bad_alloc&) {
    return withoutMemory();
  } catch (const std::length_error&) {  // more than could be addressed
    return withoutMemory();
  }
}

}  // namespace tarn
