#include "util/Logger.hpp"

#include <new>

namespace libtarn {
namespace util {

// The order gives the ordinals.
const Logger::Level Logger::Level::DEBUG("DEBUG");
const Logger::Level Logger::Level::ERROR("ERROR");
const Logger::Level Logger::Level::INFO("INFO");

namespace {

// Without memory for the text a line comes without it: that there was one may be what counts.
std::string textOf(const std::ostringstream& stream) {
  try {
    return stream.str();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

}  // namespace

Logger::~Logger() {
  TARN_ASSERT(0 != location_, "0 != location");
  TARN_ASSERT(0 != function_, "0 != function");
  try {
    print(level_, location_, function_, textOf(stream_).c_str());
  } catch (...) {  // NOLINT(bugprone-empty-catch): a line that cannot be written stops nobody
  }
}

}  // namespace util
}  // namespace libtarn
