#include "HostLog.hpp"

#include <cstdio>
#include <utility>

#include "printable.hpp"
#include "util/Logger.hpp"

namespace tarn {

namespace {

struct HeldLine {
  std::string line;  // empty: none, or written already
  std::string message;
};

HostLog::Level threshold = HostLog::Level::Error;
thread_local HeldLine held;

HostLog::Level levelOf(const libtarn::util::Logger::Level& level) {
  if (level == libtarn::util::Logger::Level::ERROR) return HostLog::Level::Error;
  if (level == libtarn::util::Logger::Level::INFO) return HostLog::Level::Info;
  return HostLog::Level::Debug;
}

void writeLine(const std::string& line) { std::fprintf(stderr, "%s\n", printable(line).c_str()); }

}  // namespace

void HostLog::setLevel(Level level) { threshold = level; }

bool HostLog::isAskedFor() { return threshold < Level::Error; }

std::string HostLog::takeError() {
  held.line.clear();
  return std::exchange(held.message, std::string());
}

void HostLog::flush() {
  if (!held.line.empty()) writeLine(held.line);
  held = HeldLine();
}

}  // namespace tarn

// The library leaves this one to its host.
void libtarn::util::Logger::print(Level level, const char* location, const char* function,
                                  const char* message) {
  using tarn::HostLog;
  const HostLog::Level hostLevel = tarn::levelOf(level);
  const bool isError = hostLevel == HostLog::Level::Error;
  if (hostLevel < tarn::threshold && !isError) return;
  HostLog::flush();
  std::string line = level.toString() + " " + location + " " + function + ": " + message;
  if (isError) tarn::held.message = message;
  if (isError && tarn::threshold == HostLog::Level::Error) {
    tarn::held.line = std::move(line);
  } else if (tarn::threshold != HostLog::Level::None) {
    tarn::writeLine(line);
  }
}
