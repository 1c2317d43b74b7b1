#include "CommandError.hpp"

#include <array>
#include <cstdio>
#include <system_error>

namespace tarn {

namespace {

// Control characters could move the cursor or end the line.
bool isControl(unsigned char c) { return c < 0x20U || c == 0x7FU; }

std::string printable(const std::string& text) {
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (!isControl(byte)) {
      result += c;
      continue;
    }
    std::array<char, 5> escape{};
    std::snprintf(escape.data(), escape.size(), "\\x%02X", static_cast<unsigned>(byte));
    result += escape.data();
  }
  return result;
}

}  // namespace

std::string errorLine(const std::string& path, const std::string& message) {
  return path + ": error: " + printable(message);
}

void throwFileError(const std::string& path, int error) {
  throw CommandError(Status::FileError, errorLine(path, std::generic_category().message(error)));
}

}  // namespace tarn
