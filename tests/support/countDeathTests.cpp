// A process that an assertion ends writes no counts of what it has run, and so the death tests
// would not count for the coverage.

#ifdef TARN_COVERAGE

#include <csignal>

extern "C" void __gcov_dump();

namespace {

void writeCounts(int /*signal*/) { __gcov_dump(); }

[[maybe_unused]] const auto installed = std::signal(SIGABRT, &writeCounts);

}  // namespace

#endif
