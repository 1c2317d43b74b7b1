#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "CommandError.hpp"
#include "ObjectMask.hpp"

namespace tarn {

// The commands. Each writes to standard output and throws CommandError.

/// What a user asks of `tarn check`.
struct CheckRequest {
  std::vector<std::string> files;
  bool all = false;         ///< Every violation, not only the first.
  std::size_t limit = 100;  ///< Most violations told for a file; 0 for no limit.
};

/// What a user asks of `tarn merge`.
struct MergeRequest {
  std::string source;
  std::vector<std::string> deltas;
  std::string output = "-";  ///< "-" is standard output.
  bool inPlace = false;      ///< The result replaces the source.
  bool checkOnly = false;    ///< Nothing is written.
  bool validate = false;     ///< Source, deltas and result are validated.
};

/// Validates each file and says so, faults on standard error. Throws nothing for a file; returns
/// the highest status.
Status checkCommand(const CheckRequest& request);

/// Applies the deltas to the source in their order, and writes the result.
void mergeCommand(const MergeRequest& request);

/// The printed form of the document in `path`.
void printCommand(const std::string& path);

/// The managed objects of `path` that match `mask`, a line each: name, tab, class.
void listCommand(const std::string& path, const ObjectMask& mask);

}  // namespace tarn
