#pragma once

#include <string>

namespace tarn {

/// Collects lines and writes them to standard output in blocks. The destructor writes nothing,
/// since flush() may throw.
class LineWriter {
 public:
  /// The text to which the caller appends the current line.
  std::string& lines() { return lines_; }
  /// Ends the current line, with a line end or another character.
  void endLine(char end = '\n');
  void flush();

 private:
  std::string lines_;
};

}  // namespace tarn
