#pragma once

#include <string>

namespace fuzz {

/// Ends the program with the message `what` on standard error, so that the fuzzer keeps the input.
[[noreturn]] void fail(const std::string& what);

inline void check(bool holds, const char* what) {
  if (!holds) fail(what);
}

/// Fails unless `finding` is empty.
inline void checkNothing(const std::string& finding) {
  if (!finding.empty()) fail(finding);
}

}  // namespace fuzz
