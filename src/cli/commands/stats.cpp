#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <map>
#include <string>

#include "CommandLine.hpp"
#include "commonOptions.hpp"
#include "documents/Selection.hpp"
#include "documents/documentFile.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"
#include "libtarn/util/countElements.hpp"
#include "libtarn/util/dumpElement.hpp"
#include "libtarn/util/dumpTarnDocument.hpp"
#include "output/HostLog.hpp"
#include "output/json.hpp"
#include "output/outputFile.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnManagedObject;

namespace {

struct StatsRequest {
  std::string file;
  Selection selection;
  bool json = false;
};

struct Stats {
  std::map<std::string, std::size_t> objectsOfClass;
  std::size_t objects = 0;
  libtarn::util::ElementCounts counts;
  std::size_t textBytes = 0;  // of the printed form
  std::size_t memoryBytes = 0;
  double loadMilliseconds = 0;
  double validationMilliseconds = 0;
  bool isValid = false;
};

template <class Work>
double millisecondsOf(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
  return time.count();
}

void countObjects(const Selector::Objects& objects, Stats& stats) {
  stats.objects = objects.size();
  for (const LibTarnManagedObject* object : objects) {
    ++stats.objectsOfClass[textOrEmpty(object->getClass())];
  }
}

// Elements and text of the document, or of the objects alone when there is a selection.
void measure(Document& document, Stats& stats) {
  std::string text;
  stats.counts = libtarn::util::countElements(document);
  libtarn::util::dumpTarnDocument(document, text);
  stats.textBytes = text.size();
}

void measure(const Selector::Objects& objects, Stats& stats) {
  std::string text;
  for (const LibTarnManagedObject* object : objects) {
    const libtarn::util::ElementCounts counts = libtarn::util::countElements(*object);
    stats.counts.elements += counts.elements;
    stats.counts.parameters += counts.parameters;
    stats.counts.depth = std::max(stats.counts.depth, counts.depth);
    text.clear();
    libtarn::util::dumpElement(*object, text, 0);
    stats.textBytes += text.size();
  }
}

// Memory is taken before anything is asked of the document that builds more.
Stats statsOf(const StatsRequest& request) {
  Stats stats;
  Document document;
  Selector selector(request.selection);
  stats.loadMilliseconds = millisecondsOf([&] { loadDocument(request.file, document); });
  stats.memoryBytes = document.getMemorySize();
  stats.validationMilliseconds = millisecondsOf([&] { stats.isValid = document.validate() == 0; });
  HostLog::takeError();
  const Selector::Objects objects = selector.select(document);
  countObjects(objects, stats);
  if (request.selection.isEmpty()) {
    measure(document, stats);
  } else {
    selector.requireFound(request.file, objects.size());
    measure(objects, stats);
  }
  return stats;
}

std::string textOf(const std::string& path, const Stats& stats) {
  constexpr double MEBIBYTE = 1 << 20;
  std::string text = styled(Style::Bold, printable(path)) + "\n";
  const auto line = [&text](const char* name, const std::string& value) {
    text += fmt::format("{:<16}{:>12}\n", name, value);
  };
  line("objects", std::to_string(stats.objects));
  for (const auto& [className, count] : stats.objectsOfClass) {
    line(("  " + printable(className)).c_str(), std::to_string(count));
  }
  line("elements", std::to_string(stats.counts.elements));
  line("parameters", std::to_string(stats.counts.parameters));
  line("depth", std::to_string(stats.counts.depth));
  line("text", fmt::format("{:.2f} MiB", static_cast<double>(stats.textBytes) / MEBIBYTE));
  line("memory", fmt::format("{:.2f} MiB", static_cast<double>(stats.memoryBytes) / MEBIBYTE));
  line("load", fmt::format("{:.1f} ms", stats.loadMilliseconds));
  line("validation", fmt::format("{:.1f} ms", stats.validationMilliseconds));
  line("valid", stats.isValid ? "yes" : "no");
  return text;
}

std::string jsonOf(const std::string& path, const Stats& stats) {
  return jsonText({{"file", path},
                   {"objects", stats.objects},
                   {"objectsOfClass", stats.objectsOfClass},
                   {"elements", stats.counts.elements},
                   {"parameters", stats.counts.parameters},
                   {"depth", stats.counts.depth},
                   {"textBytes", stats.textBytes},
                   {"memoryBytes", stats.memoryBytes},
                   {"loadMilliseconds", stats.loadMilliseconds},
                   {"validationMilliseconds", stats.validationMilliseconds},
                   {"valid", stats.isValid}}) +
         "\n";
}

Status writeStats(const StatsRequest& request) {
  const Stats stats = statsOf(request);
  writeOutput(request.json ? jsonOf(request.file, stats) : textOf(request.file, stats));
  return Status::Done;
}

}  // namespace

void addStats(CommandLine& line) {
  auto [options, request] =
      line.add<StatsRequest>("stats", "Report figures of a document", writeStats);
  addFile(options, request.file);
  addSelection(options, request.selection);
  options.addFlag("--json", request.json, "Write them as JSON");
}

}  // namespace tarn
