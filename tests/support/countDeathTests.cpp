// A process that ends with an assertion writes no coverage counts. Without this file, death tests
// would not count.

#ifdef TARN_COVERAGE

#include <csignal>

extern "C" void __gcov_dump();

namespace {

void writeCounts(int /*signal*/) { __gcov_dump(); }

[[maybe_unused]] const auto installed = std::signal(SIGABRT, &writeCounts);

}  // namespace

#endif
