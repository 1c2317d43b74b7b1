#include "documents/documentFile.hpp"

#include <cstdio>

#include "CommandError.hpp"
#include "documents/faults.hpp"
#include "documents/writtenText.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "output/HostLog.hpp"
#include "output/outputFile.hpp"

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
  throw CommandError(Status::RuleBroken, subjectOf(file.path(), fault), fault.message);
}

LibTarnCmData& requireCmData(const Document& document, const std::string& path) {
  LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (!cmData) throw CommandError(Status::RuleBroken, path, "has no cmData");
  return *cmData;
}

void writeResult(Document& document, Destination& destination, const std::string& report) {
  destination.write(writtenText(document));
  if (destination.isStandardOutput()) {
    std::fputs(report.c_str(), stderr);
  } else {
    writeOutput(report);
  }
  HostLog::flush();  // which takes memory
  destination.commit();
}

}  // namespace tarn
