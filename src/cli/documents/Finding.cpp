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

// Of the violations of a file: messages that repeat a long name would grow with the square of its
// size.
constexpr std::size_t MOST_VIOLATION_BYTES = std::size_t{64} << 20U;

// Takes no memory itself.
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
  HostLog::takeError();  // what the violations say, too
  finding.status = Status::RuleBroken;
}

// An error says what is wrong but not always the path of the element, which costs a second walk.
void findPath(Document& document, Finding& finding) {
  Finding first;
  collect(document, 1, first);
  const bool isThatOne =
      !first.violations.empty() && first.violations.front().message == finding.error->message();
  if (isThatOne) finding.path = first.violations.front().path;
}

// Most files are valid, and it takes no document to see that. Log lines are those of a document,
// and so are the paths of violations.
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
  HostLog::drop();  // a thread does not keep it
  return finding;
}

}  // namespace

// A file that takes more memory than there is keeps none of the others from being checked.
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
