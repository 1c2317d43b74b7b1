#pragma once

#include <string>
#include <vector>

#include "CommandError.hpp"

namespace tarn {

/// What became of each object that a command was to change. The document is written only when all
/// went well.
class Outcomes {
 public:
  /// For the objects of the file at `path`.
  explicit Outcomes(std::string path);

  /// Notes that `what` was done to the object.
  void addDone(const std::string& distName, const char* what);
  /// Notes that nothing could be done to the object.
  void addFailure(Status status, const std::string& distName, const std::string& message);

  /// Throws the last failure, when there is one, and reports those before it.
  void throwIfFailed() const;
  /// A line for each object to which something was done.
  const std::string& report() const { return report_; }

 private:
  std::string path_;
  std::string report_;
  std::vector<CommandError> failures_;
};

}  // namespace tarn
