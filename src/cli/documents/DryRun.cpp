#include "documents/DryRun.hpp"

#include <utility>

#include "documents/differenceWriter.hpp"
#include "documents/documentFile.hpp"
#include "documents/writtenText.hpp"
#include "files/Destination.hpp"
#include "output/HostLog.hpp"
#include "output/terminal.hpp"

namespace tarn {

void finishDryRun(Document& document, const Target& target, const DryRun& options,
                  DryRunResult result) {
  writtenText(document, target.inPlace ? result.source : target.output);
  writeDifferences(std::move(result.differences), {options.json, result.operations});
  writeMessage(result.report);
  reportNote(result.source, "a dry run; nothing was written");
  HostLog::flush();
}

}  // namespace tarn
