#include <fmt/format.h>

#include <cstddef>
#include <string>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Selection.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "output/Progress.hpp"
#include "output/counted.hpp"
#include "output/reportPage.hpp"
#include "output/terminal.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

// Bytes. Browsers open a larger page slowly.
constexpr std::size_t LARGE_PAGE = 100'000'000;

struct ReportRequest {
  std::string file;
  Selection selection;
  bool byteOrder = false;
  Target target;
};

// A document without objects has a page, too, unless some are asked for.
std::vector<const LibTarnManagedObject*> objectsOf(const ReportRequest& request, Selector& selector,
                                                   const Document& document) {
  Selector::Objects objects = selector.select(document);
  if (!request.selection.isEmpty()) selector.requireFound(request.file, objects.size());
  sortByName(objects, request.byteOrder ? NameOrder::Bytes : NameOrder::Natural);
  return {objects.begin(), objects.end()};
}

void reportLarge(const std::string& file, std::size_t size) {
  if (size <= LARGE_PAGE) return;
  reportNote(file, fmt::format("the page has {} MB; a browser opens it slowly", size / 1'000'000));
}

ReportPage pageOf(const ReportRequest& request, Selector& selector, Document& document) {
  const Progress progress("Building the page of", request.file);
  return reportPage(request.file, document, objectsOf(request, selector, document));
}

Status writeReport(const ReportRequest& request) {
  Destination destination(request.file, request.target);
  Selector selector(request.selection);
  Document document(request.file);
  const ReportPage page = pageOf(request, selector, document);
  if (page.violationsLeftOut > 0) {
    reportNote(request.file, fmt::format("{} {} left out of the page",
                                         counted(page.violationsLeftOut, "violation"),
                                         page.violationsLeftOut == 1 ? "is" : "are"));
  }
  reportLarge(request.file, page.text.size());
  destination.write(page.text);
  destination.commit();
  return Status::Done;
}

}  // namespace

void addReport(CommandLine& line) {
  auto [options, request] =
      line.add<ReportRequest>("report", "Write a page for browsing a document", writeReport);
  addFile(options, request.file);
  addSelection(options, request.selection);
  addNameOrder(options, request.byteOrder);
  options.addText("-o,--output", "OUT.html", request.target.output,
                  "The page, HTML; - is standard output");
  options.require("--output");
}

}  // namespace tarn
