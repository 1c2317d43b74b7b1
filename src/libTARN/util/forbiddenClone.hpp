#pragma once

#include "libtarn/util/Logger.hpp"

namespace libtarn {
namespace util {

/// Logs a call of a copy operation that a class must offer but nobody may call. `operation` is its
/// name in the message.
inline void logForbiddenClone(const char* location, const char* operation) {
  Logger(Logger::Level::ERROR, location, "clone") << operation << " shouldn't be called!";
}

}  // namespace util
}  // namespace libtarn
