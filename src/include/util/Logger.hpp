#pragma once

#include <iosfwd>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/util/detail/EnumClass.hpp"
// The last one: it has effect on what follows.
#include "libtarn/util/detail/hostMacrosOff.hpp"

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
  Logger(Level level, const char* location, const char* function);
  Logger(const Logger&) = delete;
  Logger& operator=(const Logger&) = delete;
  /// Calls print() once and drops what it throws.
  ~Logger();

  /// Adds to the message what `value` prints as. A caller that streams more than texts includes
  /// the header `ostream`.
  template <class Value>
  Logger& operator<<(const Value& value) {
    if (stream_) stream() << value;
    return *this;
  }
  /// Adds a text.
  Logger& operator<<(const char* text);
  Logger& operator<<(const std::string& text);

  /// To be defined by the host; the library only calls it, synchronously, once a line. The pointers
  /// are valid during the call; `message` has no line end. A host that logs from several threads
  /// makes it safe for that.
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
