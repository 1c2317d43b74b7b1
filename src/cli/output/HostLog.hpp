#pragma once

#include <string>

namespace tarn {

/// Where the library's log lines go in this command: to standard error, from a level on.
///
/// An ERROR line is held back until the command has told the error in its own words, which it gets
/// from takeError(), or until the next line; a log that was asked for has every line. Each thread
/// holds its own.
class HostLog {
 public:
  /// From which level on lines are written. At Error, only those that the command does not tell.
  enum class Level { Debug, Info, Error, None };

  /// Set before the first document is made.
  static void setLevel(Level level);
  /// Whether lines are written that tell no error.
  static bool isAskedFor();
  /// The message of the last ERROR line, whatever lines came after it; "" when there was none since
  /// the last call. Throws std::bad_alloc when there was no memory to hold it.
  static std::string takeError();
  /// Writes a line that is still held back.
  static void flush();
  /// Forgets a line that is still held back, and the message.
  static void drop();
};

}  // namespace tarn
