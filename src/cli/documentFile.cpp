#include "documentFile.hpp"

#include <cerrno>
#include <cstdio>
#include <vector>

#include "CommandError.hpp"
#include "HostLog.hpp"
#include "TextFile.hpp"
#include "outputFile.hpp"
#include "util/dumpTarnDocument.hpp"

namespace tarn {

using libtarn::model::Diagnostic;
using libtarn::model::LibTarnDocument;

namespace {

void load(TextFile& file, LibTarnDocument& document, bool validate) {
  const std::string& path = file.path();
  if (document.parse(file.read(), validate) == 0) return;
  HostLog::takeError();  // what the diagnostic says, too
  const Diagnostic& diagnostic = document.getDiagnostic();
  if (diagnostic.code == 1) {
    throw CommandError(Status::Malformed, path, file.locate(diagnostic.offset), diagnostic.message);
  }
  throw CommandError(Status::RuleBroken, path, diagnostic.message);
}

}  // namespace

void loadDocument(TextFile& file, LibTarnDocument& document) { load(file, document, false); }

void loadValidDocument(TextFile& file, LibTarnDocument& document) { load(file, document, true); }

void loadDocument(const std::string& path, LibTarnDocument& document) {
  TextFile file(path);
  loadDocument(file, document);
}

void loadValidDocument(const std::string& path, LibTarnDocument& document) {
  TextFile file(path);
  loadValidDocument(file, document);
}

void writeResult(LibTarnDocument& document, Destination& destination, const std::string& report) {
  std::string text;
  libtarn::util::dumpTarnDocument(document, text);
  destination.write(text);
  if (destination.isStandardOutput()) {
    std::fputs(report.c_str(), stderr);
  } else {
    writeOutput(report);
  }
  HostLog::flush();  // which takes memory
  destination.commit();
}

}  // namespace tarn
