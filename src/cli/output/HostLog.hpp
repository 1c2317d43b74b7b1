#pragma once

#include <string>

namespace tarn {

/// The log callback of the command: writes lines from a level on to standard error.
///
/// An ERROR line is held back until the next line comes, or until takeError() returns its message:
/// the command then reports the error in its own words. When the user asks for a log, every line is
/// written. Each thread holds back its own line.
class HostLog {
 public:
  /// The lowest level that is written. At Error, only lines that the command does not report
  /// itself.
  enum class Level { Debug, Info, Error, None };

  /// Set before the first document is made.
  static void setLevel(Level level);
  /// True if lines below the level ERROR are written.
  static bool isAskedFor();
  /// Returns the message of the last ERROR line, also when other lines followed it; "" when there
  /// was none since the last call. Throws std::bad_alloc when there was no memory to keep it.
  static std::string takeError();
  /// Writes the line that is held back.
  static void flush();
  /// Drops the line that is held back, and its message.
  static void drop();
};

}  // namespace tarn
