#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "CommandError.hpp"

namespace tarn {

/// What a command did to each object. The document is written only when there was no failure.
class Outcomes {
 public:
  /// For the objects of the file at `path`.
  explicit Outcomes(std::string path);

  /// Records that `what` was done to the object.
  void addDone(const std::string& distName, const char* what);
  /// Records that nothing could be done to the object.
  void addFailure(Status status, const std::string& distName, const std::string& message);

  /// If there were failures, reports all but the last one and throws that.
  void throwIfFailed() const;
  /// Returns a line with the number of objects to which `what` was done.
  std::string count(const char* what) const;
  /// One line for each object to which something was done.
  const std::string& report() const { return report_; }

 private:
  std::string path_;
  std::string report_;
  std::size_t doneCount_ = 0;
  std::vector<CommandError> failures_;
};

}  // namespace tarn
