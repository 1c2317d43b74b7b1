#pragma once

#include <memory>
#include <string>
#include <vector>

#include "output/Finding.hpp"

namespace tarn {

/// Writes what was found in files, in one format. Holds the findings of no file: memory is bounded
/// by the faults of one. All functions throw CommandError and OutputClosed when standard output
/// cannot be written.
class FindingWriter {
 public:
  FindingWriter() = default;
  FindingWriter(const FindingWriter&) = delete;
  FindingWriter& operator=(const FindingWriter&) = delete;
  virtual ~FindingWriter() = default;

  /// Called for each file, in their order.
  virtual void add(const std::string& path, const Finding& finding) = 0;
  /// Called once, after the last file, with the exit status of the command.
  virtual void finish(Status /*status*/) {}
};

/// Lines for people: valid files on standard output, faults on standard error.
std::unique_ptr<FindingWriter> makeTextWriter();
/// A JSON object for each file, on a line: its first fault, and with `listsFaults` all of them.
std::unique_ptr<FindingWriter> makeJsonWriter(bool listsFaults);
/// One SARIF 2.1.0 document, with one run. `rules` are those that faults may name.
std::unique_ptr<FindingWriter> makeSarifWriter(const std::vector<Rule>& rules);
/// One JUnit document: a test suite for each file, and in it a test case for each fault, or one
/// for a file without.
std::unique_ptr<FindingWriter> makeJunitWriter();

}  // namespace tarn
