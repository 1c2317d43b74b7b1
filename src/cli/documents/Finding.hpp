#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "CommandError.hpp"
#include "libtarn/model/validation/Violation.hpp"

namespace tarn {

/// What a check found in one file.
struct Finding {
  Status status = Status::Done;
  std::optional<CommandError> error;  ///< The one fault; absent when all are collected.
  std::string path;                   ///< Of the element at fault, if it is known.
  std::vector<libtarn::model::validation::Violation> violations;
  std::size_t violationCount = 0;  ///< With those left out.

  /// True if there was not enough memory for the check.
  bool lacksMemory() const { return status == Status::FileError && !error; }
};

/// What a check looks for.
struct CheckScope {
  bool all = false;         ///< Every violation, not only the first.
  std::size_t limit = 100;  ///< Most violations for a file; 0 for as many as 64 MiB hold.
  bool wantsPath = false;   ///< Also the path of the element with the first violation.
};

/// Checks the file at `path`. Throws nothing for a fault in the file, nor for one that takes more
/// memory than there is.
Finding checkFile(const std::string& path, const CheckScope& scope);

}  // namespace tarn
