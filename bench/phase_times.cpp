// Times of the phases of a document in one run: load, validation, comparison with a changed
// document, merge of a small delta, merge of a delta that updates every object.
//
// Usage: phase_times DOCUMENT [ROUNDS]     medians of that number of rounds (7)

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"

using libtarn::editor::TarnDiff;
using libtarn::editor::TarnMerge;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using Operation = LibTarnManagedObject::Operation;

void libtarn::util::Logger::print(Level level, const char* /*location*/, const char* /*function*/,
                                  const char* message) {
  if (level == Level::ERROR) std::fprintf(stderr, "%s\n", message);
}

namespace {

constexpr const char* LOAD = "load";
constexpr std::size_t SMALL_DELTA = 1000;  // objects

class PhaseTimes {
 public:
  /// `work` returns true on success.
  void measure(const char* phase, const std::function<bool()>& work) {
    const auto start = std::chrono::steady_clock::now();
    const bool done = work();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    if (!done) {
      std::fprintf(stderr, "%s failed\n", phase);
      std::exit(1);
    }
    if (times_.find(phase) == times_.end()) order_.push_back(phase);
    times_[phase].push_back(time.count());
  }

  void report() {
    const double load = median(LOAD);
    for (const char* phase : order_) {
      std::printf("%-42s %10.2f ms  %7.4f loads\n", phase, median(phase), median(phase) / load);
    }
  }

 private:
  double median(const char* phase) {
    std::vector<double>& times = times_[phase];
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2),
                     times.end());
    return times[times.size() / 2];
  }

  std::map<const char*, std::vector<double>> times_;
  std::vector<const char*> order_;
};

std::vector<char> readFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  std::vector<char> text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  text.push_back('\0');
  return text;
}

// `count` evenly spread objects of `document`, with one parameter each.
void fillDelta(const LibTarnDocument& document, std::size_t count, LibTarnDocument& delta) {
  libtarn::util::TarnFactory& factory = delta.getFactory();
  auto* const cmData = factory.createLibTarnCmData(libtarn::model::LibTarnCmData::Type::PLAN);
  delta.addLibTarnCmData(*cmData);
  const auto objects = document.getLibTarnCmData()->getLibTarnManagedObjects();
  const std::size_t step =
      std::max<std::size_t>(1, document.getLibTarnCmData()->getManagedObjectNumber() / count);
  std::size_t number = 0;
  for (const LibTarnManagedObject* object : objects) {
    if (number++ % step != 0) continue;
    LibTarnManagedObject* const change = factory.createLibTarnManagedObject(
        object->getClass(), object->getDistName(), Operation::UPDATE, nullptr);
    change->addParameter(*factory.createScalar("changed", "1"));
    cmData->addLibTarnManagedObject(*change);
  }
}

// `text` with another last character in every `step`-th value.
std::vector<char> withOtherValues(std::vector<char> text, std::size_t step) {
  std::size_t number = 0;
  for (std::size_t i = 1; i + 3 < text.size(); ++i) {
    const bool isValue = text[i] != '>' && std::memcmp(&text[i + 1], "</p", 3) == 0;
    if (isValue && number++ % step == 0) text[i] = text[i] == '7' ? '8' : '7';
  }
  return text;
}

void measureComparison(const LibTarnDocument& document, const std::vector<char>& text,
                       std::size_t step, const char* phase, PhaseTimes& times) {
  LibTarnDocument changed;
  changed.parse(withOtherValues(text, step), false);
  times.measure(phase, [&] { return !TarnDiff(document, changed).getDifferences().empty(); });
}

void measureRound(const std::vector<char>& text, PhaseTimes& times) {
  std::vector<char> copy = text;
  times.measure("load, validation and end of a document", [&] {
    LibTarnDocument document;
    return document.parse(std::move(copy), true) == 0;
  });
  copy = text;
  LibTarnDocument source;
  times.measure(LOAD, [&] { return source.parse(std::move(copy), false) == 0; });
  times.measure("validation", [&] { return source.validate() == 0; });
  measureComparison(source, text, 100, "comparison, 1 % of the values changed", times);
  measureComparison(source, text, 1, "comparison, every value changed", times);
  {
    LibTarnDocument small;
    fillDelta(source, SMALL_DELTA, small);
    times.measure("merge of about 1000 objects",
                  [&] { return TarnMerge(source).mergeDocument(small); });
  }
  LibTarnDocument whole;
  whole.parse(text, false);
  for (LibTarnManagedObject* object : whole.getLibTarnCmData()->getLibTarnManagedObjects()) {
    object->clearOperation();
  }
  times.measure("merge of a delta that updates every object",
                [&] { return TarnMerge(source).mergeDocument(whole); });
  times.measure("validation of the result", [&] { return source.validate() == 0; });
  times.measure("print of the result", [&] {
    std::string printed;
    libtarn::util::dumpTarnDocument(source, printed);
    return !printed.empty();
  });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: phase_times DOCUMENT [ROUNDS]\n");
    return 64;
  }
  const std::vector<char> text = readFile(argv[1]);
  const int rounds = argc == 3 ? std::atoi(argv[2]) : 7;
  PhaseTimes times;
  for (int round = 0; round < rounds; ++round) measureRound(text, times);
  std::printf("%s: %zu bytes, medians of %d rounds\n", argv[1], text.size() - 1, rounds);
  times.report();
}
