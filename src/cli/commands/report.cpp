#include <fmt/format.h>

#include <cstddef>
#include <string>
#include <vector>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "output/reportPage.hpp"
#include "output/terminal.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;

namespace {

// Bytes. Browsers open a larger page slowly.
constexpr std::size_t LARGE_PAGE = 100'000'000;

struct ReportRequest {
  std::string file;
  Target target;
};

std::vector<const LibTarnManagedObject*> objectsOf(const Document& document) {
  std::vector<const LibTarnManagedObject*> objects;
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (!cmData) return objects;
  for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
    objects.push_back(object);
  }
  return objects;
}

void reportLarge(const std::string& file, std::size_t size) {
  if (size <= LARGE_PAGE) return;
  reportNote(file, fmt::format("the page has {} MB; a browser opens it slowly", size / 1'000'000));
}

Status writeReport(const ReportRequest& request) {
  Destination destination(request.file, request.target);
  Document document(request.file);
  const ReportPage page = reportPage(request.file, document, objectsOf(document));
  if (page.violationsLeftOut > 0) {
    reportNote(request.file,
               fmt::format("{} violations are left out of the page", page.violationsLeftOut));
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
  options.addText("-o,--output", "OUT.html", request.target.output,
                  "The page, HTML; - is standard output");
  options.require("--output");
}

}  // namespace tarn
