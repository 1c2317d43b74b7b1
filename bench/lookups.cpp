// Look-ups by name, libtarn beside what a host would use instead.
//
// Usage: lookups [--benchmark_...]
// Names of the benchmarks are TASK/LIBRARY/NUMBER OF NAMES. The time is that of one look-up, in
// nanoseconds; names are looked up in random order.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <map>
#include <pugixml.hpp>
#include <random>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"

using namespace libtarn::model;

void libtarn::util::Logger::print(Level level, const char* /*location*/, const char* /*function*/,
                                  const char* message) {
  if (level == Level::ERROR) std::cerr << message << '\n';
}

namespace {

struct ByText {
  bool operator()(const char* a, const char* b) const { return std::strcmp(a, b) < 0; }
};

std::vector<std::string> shuffled(std::vector<std::string> names) {
  std::shuffle(names.begin(), names.end(), std::mt19937(1));
  return names;
}

std::vector<std::string> objectNames(std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) {
    names.push_back("NET-1/SITE-" + std::to_string(i / 64) + "/RADIO-" + std::to_string(i / 8) +
                    "/CELL-" + std::to_string(i));
  }
  return shuffled(std::move(names));
}

std::vector<std::string> parameterNames(std::size_t count) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < count; ++i) names.push_back("parameter" + std::to_string(1000 + i));
  return shuffled(std::move(names));
}

std::string documentOf(const std::string& content) {
  return "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='actual'><header/>" + content +
         "</cmData></tarn>";
}

std::string objectsText(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += "<managedObject class='CELL' distName='" + name + "'/>";
  }
  return documentOf(text);
}

std::string parametersText(const std::vector<std::string>& names) {
  std::string text = "<managedObject class='CELL' distName='CELL-1'>";
  for (const std::string& name : names) text += "<p name='" + name + "'>1</p>";
  return documentOf(text + "</managedObject>");
}

// Calls `find` with one name after the other.
template <class Find>
void lookUp(benchmark::State& state, const std::vector<std::string>& asked, Find find) {
  std::size_t next = 0;
  for (auto _ : state) {
    if (!find(asked[next].c_str())) state.SkipWithError("not found");
    if (++next == asked.size()) next = 0;
  }
}

std::vector<std::string> asked(std::vector<std::string> names) {
  std::shuffle(names.begin(), names.end(), std::mt19937(2));
  return names;
}

void objectInLibtarn(benchmark::State& state) {
  const auto names = objectNames(static_cast<std::size_t>(state.range(0)));
  LibTarnDocument document;
  document.parse(objectsText(names).c_str(), false);
  const LibTarnCmData& cmData = *document.getLibTarnCmData();
  lookUp(state, asked(names),
         [&cmData](const char* name) { return cmData.getLibTarnManagedObject(name); });
}

void objectInMap(benchmark::State& state) {
  const auto names = objectNames(static_cast<std::size_t>(state.range(0)));
  std::map<const char*, const std::string*, ByText> map;
  for (const std::string& name : names) map.emplace(name.c_str(), &name);
  lookUp(state, asked(names), [&map](const char* name) {
    const auto found = map.find(name);
    return found == map.end() ? nullptr : found->second;
  });
}

void parameterInLibtarn(benchmark::State& state) {
  const auto names = parameterNames(static_cast<std::size_t>(state.range(0)));
  LibTarnDocument document;
  document.parse(parametersText(names).c_str(), false);
  const LibTarnManagedObject& object =
      *document.getLibTarnCmData()->getLibTarnManagedObject("CELL-1");
  lookUp(state, asked(names),
         [&object](const char* name) { return object.getScalarParameter(name); });
}

void parameterInPugixml(benchmark::State& state) {
  const auto names = parameterNames(static_cast<std::size_t>(state.range(0)));
  std::string text = parametersText(names);
  pugi::xml_document document;
  document.load_buffer_inplace(text.data(), text.size());
  const pugi::xml_node object = document.child("tarn").child("cmData").child("managedObject");
  lookUp(state, asked(names),
         [&object](const char* name) { return object.find_child_by_attribute("p", "name", name); });
}

BENCHMARK(objectInLibtarn)->Name("object/libtarn")->Arg(1000000);
BENCHMARK(objectInMap)->Name("object/std::map")->Arg(1000000);
BENCHMARK(parameterInLibtarn)->Name("parameter/libtarn")->Arg(16)->Arg(1000);
BENCHMARK(parameterInPugixml)->Name("parameter/pugixml")->Arg(16)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
