#include "util/Logger.hpp"

namespace libtarn {
namespace util {

// The order gives the ordinals.
const Logger::Level Logger::Level::DEBUG("DEBUG");
const Logger::Level Logger::Level::ERROR("ERROR");
const Logger::Level Logger::Level::INFO("INFO");

Logger::~Logger() {
  TARN_ASSERT(0 != location_, "0 != location");
  TARN_ASSERT(0 != function_, "0 != function");
  try {
    print(level_, location_, function_, stream_.str().c_str());
  } catch (...) {  // NOLINT(bugprone-empty-catch): a line that cannot be written stops nobody
  }
}

}  // namespace util
}  // namespace libtarn
