#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarn {

/// When output is coloured. Auto: on a terminal, unless the variable NO_COLOR is set.
enum class ColorChoice { Auto, Always, Never };

enum class Style { Bold, Good, Bad, Faint };

/// Set before the first output.
void setColorChoice(ColorChoice choice);

/// Returns `text` in that style for standard output, or unchanged without colours.
std::string styled(Style style, const std::string& text);

/// Returns the columns that `text`, in UTF-8, takes on a terminal.
std::size_t displayWidth(std::string_view text);

/// Writes the line of an error to standard error, with the word "error:" in colour if there is
/// memory for that.
void reportError(std::string_view line);
/// Writes "SUBJECT: error: not enough memory". Allocates no memory.
void reportNoMemory(const char* subject);

/// Writes a note to standard error: "SUBJECT: note: MESSAGE".
void reportNote(const std::string& subject, const std::string& message);

/// Asks a question on standard error and returns whether the answer is yes. Returns true without
/// asking when standard input or standard error is no terminal.
bool confirms(const std::string& question);

/// Shows the progress of a read or write on standard error if that is a terminal, after the first
/// second, and clears it at the end. Only one is shown at a time; others show nothing.
class Progress {
 public:
  /// `total` bytes; 0 when it is not known.
  Progress(const char* action, const std::string& path, std::uint64_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  void advance(std::uint64_t bytes);

 private:
  void show();

  std::string label_;
  std::uint64_t total_;
  std::uint64_t done_ = 0;
  std::int64_t nextShow_ = 0;  // milliseconds of the steady clock
  bool isActive_;
  bool isShown_ = false;
};

}  // namespace tarn
