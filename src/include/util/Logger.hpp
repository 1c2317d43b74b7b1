#pragma once

#include <sstream>

#include "TarnApi.hpp"
#include "util/Enum.hpp"

namespace libtarn {
namespace util {

/// One log line: a temporary into which the message is streamed, handed to print() when it dies.
///
/// The library filters nothing and writes nothing itself. Lines come from whichever thread logs.
class TARN_API Logger {
 public:
  /// How much a line matters.
  class Level : public Enum<Level> {
   public:
    /// For the developer, for the operator when something is wrong, and what is worth knowing.
    static const Level DEBUG;
    static const Level ERROR;
    static const Level INFO;

    /// A copy of a constant.
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

  /// Adds to the message what `value` prints as.
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
