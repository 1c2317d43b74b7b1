#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "CommandError.hpp"
#include "libtarn/model/validation/Violation.hpp"

namespace tarn {

/// The result of the validation of one file.
struct Finding {
  Status status = Status::Done;
  std::optional<CommandError> error;  ///< The one fault; absent when all are collected.
  std::string path;                   ///< Of the element at fault, if it is known.
  std::vector<libtarn::model::validation::Violation> violations;
  std::size_t violationCount = 0;  ///< With those left out.

  /// True if there was not enough memory.
  bool lacksMemory() const { return status == Status::FileError && !error; }
};

/// What a validation looks for.
struct CheckScope {
  bool all = false;         ///< Every violation, not only the first.
  std::size_t limit = 100;  ///< Most violations for a file; 0 for as many as 64 MiB hold.
  bool wantsPath = false;   ///< Also the path of the element with the first violation.
};

/// Validates the file at `path`. Does not throw for a fault in the file, or for a file that needs
/// too much memory: the finding says so.
Finding checkFile(const std::string& path, const CheckScope& scope);

}  // namespace tarn
