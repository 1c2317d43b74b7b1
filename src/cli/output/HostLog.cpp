#include "output/HostLog.hpp"

#include <memory>
#include <new>
#include <utility>

#include "libtarn/util/Logger.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

struct HeldLine {
  std::string line;  // empty when it has been written already
  std::string message;
};

HostLog::Level threshold = HostLog::Level::Error;
// Null: none. Not an object, whose destructor the C library would have to note: without memory for
// that it ends the process.
thread_local HeldLine* held = nullptr;
// An ERROR line came for which there was no memory.
thread_local bool isErrorLost = false;

HostLog::Level levelOf(const libtarn::util::Logger::Level& level) {
  if (level == libtarn::util::Logger::Level::ERROR) return HostLog::Level::Error;
  if (level == libtarn::util::Logger::Level::INFO) return HostLog::Level::Info;
  return HostLog::Level::Debug;
}

void writeLine(const std::string& line) { writeMessage(printable(line) + "\n"); }

}  // namespace

void HostLog::setLevel(Level level) { threshold = level; }

bool HostLog::isAskedFor() { return threshold < Level::Error; }

std::string HostLog::takeError() {
  const std::unique_ptr<HeldLine> taken(std::exchange(held, nullptr));
  if (std::exchange(isErrorLost, false)) throw std::bad_alloc();
  return taken ? std::move(taken->message) : std::string();
}

void HostLog::flush() {
  if (!held || held->line.empty()) return;
  writeLine(held->line);
  held->line.clear();
}

void HostLog::drop() {
  delete std::exchange(held, nullptr);
  isErrorLost = false;
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
  // Until it is held. No line of the library is empty but one for which there was no memory.
  if (isError) tarn::isErrorLost = true;
  if (isError && *message == '\0') return;
  std::string line = level.toString() + " " + location + " " + function + ": " + message;
  auto next = std::make_unique<tarn::HeldLine>();
  next->message = message;
  const bool isHeld = isError && tarn::threshold == HostLog::Level::Error;
  if (isHeld) {
    next->line = std::move(line);
  } else if (tarn::threshold != HostLog::Level::None) {
    tarn::writeLine(line);
  }
  if (!isError) return;
  delete std::exchange(tarn::held, next.release());
  tarn::isErrorLost = false;
}
