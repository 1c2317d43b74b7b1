#include "libtarn/util/Logger.hpp"

#include <new>
#include <sstream>

#include "libtarn/Assertion.hpp"

namespace libtarn {
namespace util {

// The order determines the ordinals.
const Logger::Level Logger::Level::DEBUG("DEBUG");
const Logger::Level Logger::Level::ERROR("ERROR");
const Logger::Level Logger::Level::INFO("INFO");

namespace {

// Returns null without memory. Uses the usual operator new: a host that counts its heap may replace
// only that one, and a sanitizer's new (std::nothrow) does not match its delete.
std::ostringstream* newStream() {
  try {
    return new std::ostringstream;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// Without memory for the text, the line is passed on without it: that there was a line may matter.
std::string textOf(const std::ostringstream* stream) {
  try {
    return stream ? stream->str() : std::string();
  } catch (const std::bad_alloc&) {
    return {};
  }
}

}  // namespace

Logger::Logger(Level level, const char* location, const char* function)
    : level_(level), location_(location), function_(function), stream_(newStream()) {}

std::ostream& Logger::stream() { return *stream_; }

Logger& Logger::operator<<(const char* text) {
  if (stream_) *stream_ << text;
  return *this;
}

Logger& Logger::operator<<(const std::string& text) {
  if (stream_) *stream_ << text;
  return *this;
}

Logger::~Logger() {
  TARN_ASSERT(0 != location_, "0 != location");
  TARN_ASSERT(0 != function_, "0 != function");
  try {
    print(level_, location_, function_, textOf(stream_).c_str());
  } catch (...) {  // NOLINT(bugprone-empty-catch): a line that cannot be written stops nothing
  }
  delete stream_;
}

}  // namespace util
}  // namespace libtarn
