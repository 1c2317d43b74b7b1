#include "CommandError.hpp"

#include <fmt/format.h>

#include <string_view>
#include <system_error>

#include "output/displayWidth.hpp"
#include "output/printable.hpp"

namespace tarn {

using libtarn::util::TextPosition;

CommandError::CommandError(Status status, const std::string& subject, const std::string& message)
    : std::runtime_error(errorLine(subject, message)), status_(status), message_(message) {}

CommandError::CommandError(Status status, const std::string& subject, TextPosition place,
                           const std::string& message)
    : std::runtime_error(errorLine(subjectAt(subject, place), message)),
      status_(status),
      message_(message),
      place_(place) {}

CommandError::CommandError(Status status, const std::string& subject, const std::string& message,
                           const MarkedText& marked)
    : std::runtime_error(errorLine(subject, message) + "\n" + marked.lines),
      status_(status),
      message_(message) {}

std::string subjectOf(const std::string& path, const std::string& distName) {
  return path + ": " + distName;
}

std::string subjectAt(const std::string& path, const std::optional<TextPosition>& place) {
  return place ? fmt::format("{}:{}:{}", path, place->line, place->column) : path;
}

std::string errorLine(const std::string& subject, const std::string& message) {
  return printable(subject) + ": error: " + printable(message);
}

void throwUsageError(const std::string& message) {
  throw CommandError(Status::UsageError, "tarn", message);
}

void throwUsageError(const std::string& message, const std::string& text, std::size_t offset) {
  const std::size_t width = displayWidth(printable(std::string_view(text).substr(0, offset)));
  throw CommandError(Status::UsageError, "tarn", message,
                     MarkedText{"  " + printable(text) + "\n  " + std::string(width, ' ') + "^"});
}

void throwFileError(const std::string& path, int error) {
  throw CommandError(Status::FileError, path, std::generic_category().message(error));
}

void throwNoName() { throwUsageError("the name of a file is empty"); }

void throwChangedError(const std::string& path) {
  throw CommandError(Status::FileError, path, "was changed meanwhile and is left as it is");
}

}  // namespace tarn
