#pragma once

#include <sstream>

#include "util/Enum.hpp"

namespace libtarn {
namespace util {

/// One log line: a temporary into which the message is streamed, handed to print() when it dies.
///
/// The library filters nothing and writes nothing itself. Lines come from whichever thread logs.
class Logger {
 public:
  class Level : public Enum<Level> {
   public:
    static const Level DEBUG;
    static const Level ERROR;
    static const Level INFO;

    Level(const Enum<Level>& value) : Enum(value) {}  // NOLINT: converts

   private:
    explicit Level(const char* text) : Enum(text) {}
  };

  /// `location` ("FILE:LINE", relative to the source tree) and `function` must outlive the logger
  /// and not be null (asserted when the line is handed over).
  Logger(Level level, const char* location, const char* function)
      : level_(level), location_(location), function_(function) {}
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;
  /// Calls print() once and drops what it throws.
  ~Logger();

  template <class Value>
  Logger& operator<<(const Value& value) {
    stream_ << value;
    return *this;
  }

  /// To be defined by the host; the library only calls it, synchronously, once a line. The pointers
  /// are valid during the call; `message` has no line end. A host that logs from several threads
  /// makes it safe for that.
  static void print(Level level, const char* location, const char* function, const char* message);

 private:
  Level level_;
  const char* location_;
  const char* function_;
  std::ostringstream stream_;
};

}  // namespace util
}  // namespace libtarn
