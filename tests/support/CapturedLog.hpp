#pragma once

#include <string>
#include <vector>

namespace tarn_test {

/// The log lines of this thread since the object was made. Its source defines the log callback,
/// Logger::print(), of the test programs.
class CapturedLog {
 public:
  struct Line {
    std::string level;
    std::string location;
    std::string function;
    std::string message;
  };

  CapturedLog();
  ~CapturedLog();
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;

  const std::vector<Line>& lines() const;
  /// The messages of one level, in order.
  std::vector<std::string> messages(const std::string& level) const;
  void clear();

  /// Lets print() throw after it has kept a line.
  void throwFromPrint();
};

}  // namespace tarn_test
