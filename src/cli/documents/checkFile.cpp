#include "documents/Finding.hpp"

#include <new>
#include <stdexcept>
#include <utility>

#include "documents/documentFile.hpp"
#include "documents/faults.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "output/HostLog.hpp"

namespace tarn {

using libtarn::model::Diagnostic;
using libtarn::model::LibTarnDocument;
using libtarn::model::ParseResult;

namespace {

// Allocates no memory.
Finding withoutMemory() {
  HostLog::drop();
  Finding finding;
  finding.status = Status::FileError;
  return finding;
}

// Most files are valid, and the static validate() shows that without a document. Log lines need a
// document.
Diagnostic validate(TextFile& file) {
  if (!HostLog::isAskedFor()) {
    return LibTarnDocument::validate([&file] { return file.read(); });
  }
  Document document;
  document.parse(file.read(), true);
  return document.getDiagnostic();
}

Status statusOf(const Diagnostic& diagnostic, const Faults& faults) {
  if (diagnostic.code == ParseResult::BrokenRule) return Status::RuleBroken;
  return faults.count > 0 ? Status::Malformed : Status::Done;
}

Finding checkInMemory(const std::string& path, const CheckScope& scope) {
  Finding finding;
  try {
    TextFile file(path);
    const Diagnostic diagnostic = validate(file);
    HostLog::takeError();  // the faults hold the same message
    Faults faults;
    if (scope.all || scope.strict) {
      faults = findAllFaults(file, diagnostic, scope);
    } else if (diagnostic.code != ParseResult::Done) {
      faults = findFault(file, diagnostic);
    }
    finding.status = statusOf(diagnostic, faults);
    finding.faults = std::move(faults.list);
    finding.faultCount = faults.count;
  } catch (const CommandError& error) {
    finding.status = error.status();
    finding.error = error;
  }
  HostLog::flush();
  HostLog::drop();  // threads end without the held line
  return finding;
}

}  // namespace

std::string subjectOf(const std::string& path, const Fault& fault) {
  const std::string subject = subjectAt(path, fault.place);
  return fault.distName.empty() ? subject : subjectOf(subject, fault.distName);
}

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
