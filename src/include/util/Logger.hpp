#pragma once

#include <iosfwd>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/util/detail/EnumClass.hpp"
// Must be the last one: it undefines macros.
#include "libtarn/util/detail/hostMacrosOff.hpp"

namespace libtarn {
namespace util {

/// One log line: a temporary that the message is streamed into. Its destructor passes the line to
/// print().
///
/// The library filters nothing and writes nothing itself. Lines come from whichever thread logs.
class TARN_API Logger {
 public:
  /// Level of a line.
  class Level : public Enum<Level> {
   public:
    /// For developers.
    static const Level DEBUG;
    /// For operators, when something is wrong.
    static const Level ERROR;
    /// For information.
    static const Level INFO;

    /// A copy of a constant.
    Level(const Enum<Level>& value) : Enum(value) {}  // NOLINT: converts

   private:
    explicit Level(const char* text) : Enum(text) {}
  };

  /// Starts a line. `location` ("FILE:LINE", relative to the source tree) and `function` must
  /// outlive the logger and not be null (asserted by the destructor).
  Logger(Level level, const char* location, const char* function);
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;
  /// Calls print() once and drops an exception that it throws.
  ~Logger();

  /// Adds the printed `value` to the message. A caller that streams anything but texts includes the
  /// header `ostream`.
  template <class Value>
  Logger& operator<<(const Value& value) {
    if (stream_) stream() << value;
    return *this;
  }
  /// Adds a text to the message.
  Logger& operator<<(const char* text);
  /// Adds a text to the message.
  Logger& operator<<(const std::string& text);

  /// The log callback. The host defines it; the library calls it synchronously, once for each line.
  /// The pointers are valid during the call; `message` has no line end. When several threads log,
  /// the host's definition must be thread-safe.
  static void print(Level level, const char* location, const char* function, const char* message);

 private:
  std::ostream& stream();

  Level level_;
  const char* location_;
  const char* function_;
  std::ostringstream* stream_;  // null without memory
};

extern template class Enum<Logger::Level>;

}  // namespace util
}  // namespace libtarn

#include "libtarn/util/detail/hostMacrosOn.hpp"
