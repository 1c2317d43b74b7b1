#include <fmt/format.h>

#include "output/FindingWriter.hpp"
#include "output/outputFile.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

class TextWriter : public FindingWriter {
 public:
  void add(const std::string& path, const Finding& finding) override {
    const std::string failure = finding.failure();
    if (!failure.empty()) return reportError(errorLine(path, failure));
    if (finding.status == Status::Done) {
      return writeOutput(fmt::format("{}: {}\n", printable(path), styled(Style::Good, "ok")));
    }
    for (const Fault& fault : finding.faults) {
      reportError(lineOf(path, fault));
      if (!fault.note.empty()) reportNote(noteSubject(path, fault), fault.note);
    }
    if (finding.leftOutCount() > 0) reportError(errorLine(path, leftOutMessage(finding)));
  }
};

}  // namespace

std::unique_ptr<FindingWriter> makeTextWriter() { return std::make_unique<TextWriter>(); }

}  // namespace tarn
