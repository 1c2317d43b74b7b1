#pragma once

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
  /// One line for each object to which something was done.
  const std::string& report() const { return report_; }

 private:
  std::string path_;
  std::string report_;
  std::vector<CommandError> failures_;
};

}  // namespace tarn
