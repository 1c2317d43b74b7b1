#include "output/terminal.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "output/Progress.hpp"
#include "output/printable.hpp"

namespace tarn {

namespace {

ColorChoice colorChoice = ColorChoice::Auto;

bool hasColor(int descriptor) {
  if (colorChoice != ColorChoice::Auto) return colorChoice == ColorChoice::Always;
  const char* const noColor = std::getenv("NO_COLOR");
  return (!noColor || *noColor == '\0') && isCapableTerminal(descriptor);
}

const char* codeOf(Style style) {
  switch (style) {
    case Style::Bold:
      return "1";
    case Style::Good:
      return "32";
    case Style::Bad:
      return "1;31";
    case Style::Faint:
      return "2";
  }
  return "0";
}

std::string styledFor(int descriptor, Style style, const std::string& text) {
  return hasColor(descriptor) ? fmt::format("\x1b[{}m{}\x1b[0m", codeOf(style), text) : text;
}

}  // namespace

bool isCapableTerminal(int descriptor) {
  const char* const kind = std::getenv("TERM");
  return kind && *kind != '\0' && std::string_view(kind) != "dumb" && ::isatty(descriptor) != 0;
}

void setColorChoice(ColorChoice choice) { colorChoice = choice; }

std::string styled(Style style, const std::string& text) {
  return styledFor(STDOUT_FILENO, style, text);
}

void writeMessage(std::string_view lines) {
  const ProgressPause pause;
  std::fwrite(lines.data(), 1, lines.size(), stderr);
}

void reportError(std::string_view line) {
  try {
    const std::string word = "error:";
    std::string text(line);
    const std::size_t position = text.find(": " + word);
    if (position != std::string::npos) {
      text.replace(position + 2, word.size(), styledFor(STDERR_FILENO, Style::Bad, word));
    }
    text += '\n';
    writeMessage(text);
  } catch (const std::bad_alloc&) {
    writeMessage(line);
    writeMessage("\n");
  }
}

void reportNoMemory(const char* subject) {
  std::string_view text(subject);
  const ProgressPause pause;
  while (!text.empty()) {
    const std::size_t size = printableSize(text);
    std::fwrite(text.data(), 1, size, stderr);
    text.remove_prefix(size);
    if (text.empty()) break;
    std::fprintf(stderr, "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(text[0])));
    text.remove_prefix(1);
  }
  std::fputs(": error: not enough memory\n", stderr);
}

void reportNote(const std::string& subject, const std::string& message) {
  writeMessage(printable(subject) + ": note: " + printable(message) + "\n");
}

bool confirms(const std::string& question) {
  if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0) return true;
  const ProgressPause pause;
  std::fprintf(stderr, "%s [y/N] ", question.c_str());
  std::array<char, 16> answer{};
  if (!std::fgets(answer.data(), answer.size(), stdin)) return false;
  const std::string_view text(answer.data());
  return text == "y\n" || text == "Y\n" || text == "yes\n";
}

}  // namespace tarn
