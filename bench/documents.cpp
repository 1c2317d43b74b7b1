// Tasks on one whole document; libtarn and its peers take turns in one process.
//
// Usage: documents DOCUMENT [--benchmark_...]
// Names of the benchmarks are TASK/LIBRARY/MEMORY. Memory is cold, that is fresh from the system in
// every round, or warm, that is used by earlier rounds. Options of Google Benchmark:
// --benchmark_filter, --benchmark_repetitions, --benchmark_format=json.

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>

#include "Work.hpp"
#include "libtarn/libtarn.hpp"

void libtarn::util::Logger::print(Level level, const char* /*location*/, const char* /*function*/,
                                  const char* message) {
  if (level == Level::ERROR) std::cerr << message << '\n';
}

namespace bench {

std::vector<Work> allWorks() {
  std::vector<Work> works;
  addTarnWorks(works);
  addPugixmlWorks(works);
  addTinyxml2Works(works);
  addLibxml2Works(works);
  addExpatWorks(works);
  addLibyangWorks(works);
  addLimits(works);
  return works;
}

namespace {

// Resident bytes of this process.
double residentBytes() {
  std::size_t total = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void measure(benchmark::State& state, const Work& work, Memory memory, const std::string& text) {
  for (auto _ : state) {
    if (memory == Memory::COLD) {
      malloc_trim(0);
    } else {
      work.prepare(text, memory)();
    }
    const double before = residentBytes();
    const Round round = work.prepare(text, memory);
    const auto start = std::chrono::steady_clock::now();
    const bool done = round();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(time.count());
    state.counters["resident"] = residentBytes() - before;
    if (!done) state.SkipWithError("went wrong");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(text.size()) *
                          static_cast<std::int64_t>(state.iterations()));
}

std::string readFile(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void registerAll(const std::string& text) {
  for (const Work& work : allWorks()) {
    for (const Memory memory : {Memory::COLD, Memory::WARM}) {
      if (work.slow && memory == Memory::WARM) continue;
      const std::string name =
          work.task + "/" + work.library + (memory == Memory::COLD ? "/cold" : "/warm");
      benchmark::RegisterBenchmark(
          name.c_str(),
          [work, memory, &text](benchmark::State& state) { measure(state, work, memory, text); })
          ->UseManualTime()
          ->Iterations(1)
          ->Unit(benchmark::kMillisecond);
    }
  }
}

// All memory comes from one heap. Warm rounds find its memory warm; before a cold round it is given
// back to the system.
void keepHeap() {
  mallopt(M_MMAP_MAX, 0);
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  mallopt(M_TOP_PAD, 0);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  bench::keepHeap();
  benchmark::Initialize(&argc, argv);
  if (argc != 2) {
    std::cerr << "usage: documents DOCUMENT [--benchmark_...]\n";
    return 64;
  }
  const std::string text = bench::readFile(argv[1]);
  if (text.empty()) {
    std::cerr << argv[1] << ": cannot be read or is empty\n";
    return 3;
  }
  bench::registerAll(text);
  benchmark::RunSpecifiedBenchmarks();
}
