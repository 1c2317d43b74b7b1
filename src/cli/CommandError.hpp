#pragma once

#include <stdexcept>
#include <string>

namespace tarn {

/// Exit statuses of the command. Of several, the highest counts.
enum class Status {
  Done = 0,
  Malformed = 1,    ///< The XML is malformed.
  RuleBroken = 2,   ///< A rule of the model is broken.
  Conflict = 3,     ///< A delta does not fit its source.
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

/// The line that tells what is wrong with a file: "FILE: error: MESSAGE", on one line whatever the
/// texts of a document put into the message.
std::string errorLine(const std::string& path, const std::string& message);

/// Throws a CommandError for a file that cannot be read or written; `error` is the errno.
[[noreturn]] void throwFileError(const std::string& path, int error);

}  // namespace tarn
