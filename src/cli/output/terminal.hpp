#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarn {

/// Whether output is coloured: Auto for a terminal, unless the user's NO_COLOR is set.
enum class ColorChoice { Auto, Always, Never };

enum class Style { Bold, Good, Bad, Faint };

/// Set before the first output.
void setColorChoice(ColorChoice choice);

/// `text` in that style for standard output, or as it is.
std::string styled(Style style, const std::string& text);

/// Columns that `text`, in UTF-8, takes on a terminal.
std::size_t displayWidth(std::string_view text);

/// Writes an error's line to standard error, the word "error:" coloured where there is memory for
/// it.
void tellError(std::string_view line);
/// Writes "SUBJECT: error: not enough memory", without any itself.
void tellNoMemory(const char* subject);

/// Writes a line that is no error to standard error: "SUBJECT: note: MESSAGE".
void tellNote(const std::string& subject, const std::string& message);

/// Tells how far a long reading or writing is, on standard error when that is a terminal: from the
/// second second on, and gone at the end. One at a time; further ones stay silent.
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
