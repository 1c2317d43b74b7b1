#include "documents/checkFile.hpp"

#include <new>
#include <stdexcept>
#include <utility>

#include "documents/documentFile.hpp"
#include "documents/faultRules.hpp"
#include "documents/faults.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "output/HostLog.hpp"

namespace tarn {

using libtarn::model::Diagnostic;
using libtarn::model::LibTarnDocument;
using libtarn::model::ParseResult;
using libtarn::util::XmlFault;

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

// Of a file that is no text in UTF-8 or US-ASCII.
Fault faultOf(const CommandError& error) {
  Fault fault;
  fault.rule = ruleOf(XmlFault::Kind::Encoding).id;
  fault.message = error.message();
  if (error.place()) fault.place = {*error.place(), 0};
  return fault;
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
      faults = findFault(file, diagnostic, scope);
    }
    finding.status = statusOf(diagnostic, faults);
    finding.faults = std::move(faults.list);
    finding.faultCount = faults.count;
  } catch (const CommandError& error) {
    finding.status = error.status();
    if (error.status() == Status::Malformed) {
      finding.faults.push_back(faultOf(error));
      finding.faultCount = 1;
    } else {
      finding.error = error;
    }
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
