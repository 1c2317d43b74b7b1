#include <fmt/format.h>

#include <chrono>
#include <map>

#include "HostLog.hpp"
#include "commands.hpp"
#include "json.hpp"
#include "model/LibTarnCmData.hpp"
#include "model/LibTarnDocumentInternal.hpp"
#include "model/TarnDomDocument.hpp"
#include "outputFile.hpp"
#include "printable.hpp"
#include "terminal.hpp"

namespace tarn {

using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;

namespace {

struct Stats {
  std::map<std::string, std::size_t> objectsOfClass;
  std::size_t objects = 0;
  std::size_t elements = 0;
  std::size_t parameters = 0;  // named single values, wherever they stand, and lists
  std::size_t depth = 0;       // the root is at 1
  std::size_t textBytes = 0;   // of the printed form
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

bool isParameter(const rapidxml::xml_node<char>& node) {
  const std::string_view tag(node.name(), node.name_size());
  return (tag == "p" || tag == "list") && node.first_attribute("name");
}

// Along the links, since a document decides how deep it is.
void countElements(const rapidxml::xml_node<char>& root, Stats& stats) {
  std::size_t depth = 1;
  const rapidxml::xml_node<char>* node = &root;
  for (;;) {
    ++stats.elements;
    if (isParameter(*node)) ++stats.parameters;
    stats.depth = std::max(stats.depth, depth);
    if (const auto* const child = node->first_node()) {
      node = child;
      ++depth;
      continue;
    }
    while (node != &root && !node->next_sibling()) {
      node = node->parent();
      --depth;
    }
    if (node == &root) return;
    node = node->next_sibling();
  }
}

void countObjects(const LibTarnDocument& document, Stats& stats) {
  const libtarn::model::LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (!cmData) return;
  stats.objects = cmData->getManagedObjectNumber();
  for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
    ++stats.objectsOfClass[object->getClass() ? object->getClass() : ""];
  }
}

// Memory is taken before anything is asked of the document that builds more.
Stats statsOf(const std::string& path) {
  Stats stats;
  LibTarnDocument document(libtarn::model::OutOfMemory::Throw);
  stats.loadMilliseconds = millisecondsOf([&] { loadDocument(path, document); });
  stats.memoryBytes = document.getMemorySize();
  stats.validationMilliseconds = millisecondsOf([&] { stats.isValid = document.validate() == 0; });
  HostLog::takeError();
  countElements(*document.getItsTarnDomDocument()->getRootElement(), stats);
  countObjects(document, stats);
  stats.textBytes = document.getItsTarnDomDocument()->printDocument().size();
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
  line("elements", std::to_string(stats.elements));
  line("parameters", std::to_string(stats.parameters));
  line("depth", std::to_string(stats.depth));
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
                   {"elements", stats.elements},
                   {"parameters", stats.parameters},
                   {"depth", stats.depth},
                   {"textBytes", stats.textBytes},
                   {"memoryBytes", stats.memoryBytes},
                   {"loadMilliseconds", stats.loadMilliseconds},
                   {"validationMilliseconds", stats.validationMilliseconds},
                   {"valid", stats.isValid}}) +
         "\n";
}

}  // namespace

void statsCommand(const std::string& path, bool json) {
  const Stats stats = statsOf(path);
  writeOutput(json ? jsonOf(path, stats) : textOf(path, stats));
}

}  // namespace tarn
