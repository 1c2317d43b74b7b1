#pragma once

#include <string>

namespace tarn {

/// Takes lines and writes them to standard output in blocks. What is left when it ends is not
/// written: flush() may throw.
class LineWriter {
 public:
  /// Where the line that is being made is appended.
  std::string& lines() { return lines_; }
  void endLine();
  void flush();

 private:
  std::string lines_;
};

}  // namespace tarn
