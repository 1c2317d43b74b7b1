#include "HostLog.hpp"

#include <utility>

#include "util/Logger.hpp"

namespace {

std::string& lastError() {
  static std::string message;
  return message;
}

}  // namespace

// The library leaves this one to its host.
void libtarn::util::Logger::print(Level level, const char* /*location*/, const char* /*function*/,
                                  const char* message) {
  if (level == Level::ERROR) lastError() = message;
}

namespace tarn {

std::string HostLog::takeError() { return std::exchange(lastError(), std::string()); }

}  // namespace tarn
