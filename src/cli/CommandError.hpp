#pragma once

#include <stdexcept>
#include <string>

namespace tarn {

/// Exit statuses of the command.
enum class Status {
  Done = 0,
  Malformed = 1,    ///< The XML is malformed.
  RuleBroken = 2,   ///< A rule of the model is broken.
  FileError = 5,    ///< A file cannot be read or written.
  UsageError = 64,  ///< The command line is wrong.
};

/// Ends a command: what to tell the user, and the exit status.
class CommandError : public std::runtime_error {
 public:
  CommandError(Status status, const std::string& message)
      : std::runtime_error(message), status_(status) {}

  Status status() const { return status_; }

 private:
  Status status_;
};

}  // namespace tarn
