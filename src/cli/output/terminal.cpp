#include "output/terminal.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
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

/// The first character of a text. The locale's character set is UTF-8, set by main(). An invalid
/// byte counts as one character.
struct Character {
  std::size_t size;     // bytes
  std::size_t columns;  // on a terminal
};

// `text` is not empty.
Character firstOf(std::string_view text) {
  wchar_t character = L'\0';
  std::mbstate_t state{};
  const std::size_t size = std::mbrtowc(&character, text.data(), text.size(), &state);
  if (size == 0 || size > text.size()) return {1, 1};
  const int columns = ::wcwidth(character);
  return {size, columns > 0 ? static_cast<std::size_t>(columns) : 0};
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

std::size_t displayWidth(std::string_view text) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80U; };
  if (std::all_of(text.begin(), text.end(), isAscii)) return text.size();
  std::size_t width = 0;
  while (!text.empty()) {
    const Character character = firstOf(text);
    width += character.columns;
    text.remove_prefix(character.size);
  }
  return width;
}

std::string shortened(const std::string& text, std::size_t columns) {
  constexpr std::string_view MARK = "...";
  std::size_t width = displayWidth(text);
  if (width <= columns) return text;
  if (columns <= MARK.size()) return "";
  const std::size_t startColumns = (columns - MARK.size()) / 3;
  const std::size_t endColumns = columns - MARK.size() - startColumns;
  std::string start;
  std::string_view rest = text;
  for (std::size_t taken = 0; width > endColumns;) {
    const Character character = firstOf(rest);
    taken += character.columns;
    width -= character.columns;
    if (taken <= startColumns) start += rest.substr(0, character.size);
    rest.remove_prefix(character.size);
  }
  // Marks that combine with a character that is left out.
  while (!rest.empty() && firstOf(rest).columns == 0) rest.remove_prefix(firstOf(rest).size);
  return start.append(MARK).append(rest);
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
