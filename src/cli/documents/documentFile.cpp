#include "documents/documentFile.hpp"

#include "CommandError.hpp"
#include "documents/faults.hpp"
#include "documents/writtenText.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "output/HostLog.hpp"
#include "output/Progress.hpp"
#include "output/outputFile.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

using libtarn::model::Diagnostic;
using libtarn::model::LibTarnCmData;
using libtarn::model::ParseResult;

Document::Document(const std::string& path, Rules rules) : Document() {
  loadDocument(path, *this, rules);
}

void loadDocument(const std::string& path, Document& document, Rules rules) {
  TextFile file(path);
  loadDocument(file, document, rules);
}

void loadDocument(TextFile& file, Document& document, Rules rules) {
  const Progress progress("Loading", file.path());
  document.path_ = file.path();
  if (document.parse(file.read(), rules == Rules::Checked) == 0) return;
  throwRefused(file, document.getDiagnostic());
}

void throwRefused(TextFile& file, const Diagnostic& diagnostic) {
  HostLog::takeError();  // what the diagnostic says, too
  if (diagnostic.code == ParseResult::Malformed) {
    throw CommandError(Status::Malformed, file.path(), file.locate(diagnostic.offset),
                       diagnostic.message);
  }
  const Fault fault = findFault(file, diagnostic).list.front();
  const std::string subject = subjectOf(file.path(), fault);
  if (fault.note.empty()) throw CommandError(Status::RuleBroken, subject, fault.message);
  const std::string note =
      printable(noteSubject(file.path(), fault)) + ": note: " + printable(fault.note);
  throw CommandError(Status::RuleBroken, subject, fault.message, MarkedText{note});
}

LibTarnCmData& requireCmData(const Document& document, const std::string& path) {
  LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (!cmData) throw CommandError(Status::RuleBroken, path, "has no cmData");
  return *cmData;
}

namespace {

// The status of a report that cannot be written says nothing of a result that is in its place.
void writeReport(const Destination& destination, const std::string& report) {
  try {
    writeOutput(report);
  } catch (const CommandError&) {
    if (destination.isWritten()) reportNote(destination.name(), "the result has been written");
    throw;
  }
}

}  // namespace

void writeResult(Document& document, Destination& destination, const std::string& report) {
  writeResult(writtenText(document, destination.name()), destination, report);
}

void writeResult(const std::string& text, Destination& destination, const std::string& report) {
  destination.write(text);
  if (destination.isStandardOutput()) {
    writeMessage(report);
  } else {
    writeReport(destination, report);
  }
  HostLog::flush();  // which takes memory
  destination.commit();
}

}  // namespace tarn
