#include "support/CapturedLog.hpp"

#include <stdexcept>

#include "libtarn/util/Logger.hpp"

namespace {

thread_local std::vector<tarn_test::CapturedLog::Line> capturedLines;
thread_local bool throwing = false;

}  // namespace

void libtarn::util::Logger::print(Level level, const char* location, const char* function,
                                  const char* message) {
  capturedLines.push_back({level.toString(), location, function, message});
  if (throwing) throw std::runtime_error("print");
}

namespace tarn_test {

CapturedLog::CapturedLog() {
  clear();
  throwing = false;
}

CapturedLog::~CapturedLog() {
  clear();
  throwing = false;
}

const std::vector<CapturedLog::Line>& CapturedLog::lines() const { return capturedLines; }

std::vector<std::string> CapturedLog::messages(const std::string& level) const {
  std::vector<std::string> result;
  for (const Line& line : capturedLines) {
    if (line.level == level) result.push_back(line.message);
  }
  return result;
}

void CapturedLog::clear() { capturedLines.clear(); }

void CapturedLog::throwFromPrint() { throwing = true; }

}  // namespace tarn_test
