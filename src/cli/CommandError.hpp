#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

#include "libtarn/util/TextPosition.hpp"

namespace tarn {

/// Exit statuses of the command. Of several, the command returns the highest.
enum class Status {
  Done = 0,
  Malformed = 1,   ///< The XML is malformed.
  RuleBroken = 2,  ///< A rule of the model is broken.
  Conflict = 3,    ///< An object to merge or to add does not fit.
  NothingMatched = 4,
  FileError = 5,    ///< A file cannot be read or written, or memory has run out.
  UsageError = 64,  ///< The command line is wrong.
};

/// Lines that follow a report: a text and, below it, a mark at the place of the error; or a note
/// about a second place.
struct MarkedText {
  std::string lines;
};

/// Ends a command with an exit status and a report to the user: "SUBJECT: error: MESSAGE", or
/// "SUBJECT:LINE:COLUMN: error: MESSAGE". The report is one line of printable characters, also when
/// subject or message hold texts of a document.
class CommandError : public std::runtime_error {
 public:
  /// `subject` is what is at fault: a file, or a file and an object in it.
  CommandError(Status status, const std::string& subject, const std::string& message);
  CommandError(Status status, const std::string& subject, libtarn::util::TextPosition place,
               const std::string& message);
  CommandError(Status status, const std::string& subject, const std::string& message,
               const MarkedText& marked);

  Status status() const { return status_; }
  const std::string& message() const { return message_; }
  const std::optional<libtarn::util::TextPosition>& place() const { return place_; }

 private:
  Status status_;
  std::string message_;
  std::optional<libtarn::util::TextPosition> place_;
};

/// Returns the subject of an error about one object of a file.
std::string subjectOf(const std::string& path, const std::string& distName);
/// Returns the subject of an error at a place in a file, "FILE:LINE:COLUMN", or the file alone
/// without a place.
std::string subjectAt(const std::string& path,
                      const std::optional<libtarn::util::TextPosition>& place);
/// Returns the printable line for an error, "SUBJECT: error: MESSAGE".
std::string errorLine(const std::string& subject, const std::string& message);

/// Throws a CommandError for wrong usage.
[[noreturn]] void throwUsageError(const std::string& message);
/// Throws a CommandError for the text of an option that cannot be read. Two more lines show the
/// text and mark the byte at `offset` in it.
[[noreturn]] void throwUsageError(const std::string& message, const std::string& text,
                                  std::size_t offset);
/// Throws a CommandError for a file that cannot be read or written; `error` is the errno.
[[noreturn]] void throwFileError(const std::string& path, int error);
/// Throws the CommandError for the name of a file that is "".
[[noreturn]] void throwNoName();
/// Throws the CommandError for a file that somebody else has changed since the command began.
[[noreturn]] void throwChangedError(const std::string& path);

}  // namespace tarn
