#include <fmt/format.h>

#include <string>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/documentFile.hpp"
#include "output/counted.hpp"
#include "output/reportPage.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

struct ReportRequest {
  std::string file;
  Target target;
};

Status writeReport(const ReportRequest& request) {
  Destination destination(request.file, request.target);
  Document document(request.file);
  const ReportPage page = reportPage(request.file, document);
  if (page.violationsLeftOut > 0) {
    reportNote(request.file, fmt::format("{} {} left out of the page",
                                         counted(page.violationsLeftOut, "violation"),
                                         page.violationsLeftOut == 1 ? "is" : "are"));
  }
  destination.write(page.text);
  destination.commit();
  return Status::Done;
}

}  // namespace

void addReport(CommandLine& line) {
  auto [options, request] =
      line.add<ReportRequest>("report", "Write a page for browsing a document", writeReport);
  addFile(options, request.file);
  options.addText("-o,--output", "OUT.html", request.target.output,
                  "The page, HTML; - is standard output");
  options.require("--output");
}

}  // namespace tarn
