#pragma once

#include "libtarn/util/Logger.hpp"

namespace libtarn {
namespace util {

/// Reports a copy operation that a class must offer but nobody may call. `operation` is the
/// operation as the message names it.
inline void logForbiddenClone(const char* location, const char* operation) {
  Logger(Logger::Level::ERROR, location, "clone") << operation << " shouldn't be called!";
}

}  // namespace util
}  // namespace libtarn
