#pragma once

#include <string>

namespace fuzz {

/// Ends the program, with what went wrong on standard error, so that the fuzzer keeps the input.
[[noreturn]] void fail(const std::string& what);

inline void check(bool holds, const char* what) {
  if (!holds) fail(what);
}

/// `finding` is empty when nothing is wrong.
inline void checkNothing(const std::string& finding) {
  if (!finding.empty()) fail(finding);
}

}  // namespace fuzz
