#include "CommandError.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <system_error>

namespace tarn {

using libtarn::util::TextPosition;

namespace {

bool isControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20U || byte == 0x7FU;
}

}  // namespace

CommandError::CommandError(Status status, const std::string& subject, const std::string& message)
    : std::runtime_error(errorLine(subject, message)), status_(status), message_(message) {}

CommandError::CommandError(Status status, const std::string& subject, TextPosition place,
                           const std::string& message)
    : std::runtime_error(
          errorLine(fmt::format("{}:{}:{}", subject, place.line, place.column), message)),
      status_(status),
      message_(message),
      place_(place) {}

std::string subjectOf(const std::string& path, const std::string& distName) {
  return path + ": " + printable(distName);
}

std::string errorLine(const std::string& subject, const std::string& message) {
  return subject + ": error: " + printable(message);
}

bool isPrintable(std::string_view text) {
  return std::none_of(text.begin(), text.end(), isControl);
}

std::string printable(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (isControl(c)) {
      result += fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
    } else {
      result += c;
    }
  }
  return result;
}

void throwUsageError(const std::string& message) {
  throw CommandError(Status::UsageError, "tarn", message);
}

void throwFileError(const std::string& path, int error) {
  throw CommandError(Status::FileError, path, std::generic_category().message(error));
}

}  // namespace tarn
