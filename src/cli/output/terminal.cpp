#include "output/terminal.hpp"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <new>

#include "output/printable.hpp"

namespace tarn {

namespace {

constexpr std::int64_t FIRST_SHOW = 1000;  // milliseconds
constexpr std::int64_t NEXT_SHOW = 100;
constexpr std::uint64_t MEBIBYTE = 1U << 20U;

ColorChoice colorChoice = ColorChoice::Auto;
std::atomic<bool> progressIsActive{false};

bool hasColor(int descriptor) {
  if (colorChoice != ColorChoice::Auto) return colorChoice == ColorChoice::Always;
  const char* const noColor = std::getenv("NO_COLOR");
  return (!noColor || *noColor == '\0') && isatty(descriptor) != 0;
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

std::int64_t now() {
  const auto time = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

}  // namespace

void setColorChoice(ColorChoice choice) { colorChoice = choice; }

std::string styled(Style style, const std::string& text) {
  return styledFor(STDOUT_FILENO, style, text);
}

// The locale's character set is UTF-8, set by main(). An invalid byte counts as one character.
std::size_t displayWidth(std::string_view text) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80U; };
  if (std::all_of(text.begin(), text.end(), isAscii)) return text.size();
  std::size_t width = 0;
  std::mbstate_t state{};
  for (std::size_t i = 0; i < text.size();) {
    wchar_t character = L'\0';
    const std::size_t size = std::mbrtowc(&character, text.data() + i, text.size() - i, &state);
    const bool isCharacter = size > 0 && size <= text.size() - i;
    if (!isCharacter) state = std::mbstate_t{};
    const int columns = isCharacter ? ::wcwidth(character) : 1;
    width += columns > 0 ? static_cast<std::size_t>(columns) : 0;
    i += isCharacter ? size : 1;
  }
  return width;
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
    std::fwrite(text.data(), 1, text.size(), stderr);
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
  }
}

void reportNoMemory(const char* subject) {
  std::fprintf(stderr, "%s: error: not enough memory\n", subject);
}

void reportNote(const std::string& subject, const std::string& message) {
  std::fprintf(stderr, "%s: note: %s\n", printable(subject).c_str(), message.c_str());
}

bool confirms(const std::string& question) {
  if (::isatty(STDIN_FILENO) == 0 || ::isatty(STDERR_FILENO) == 0) return true;
  std::fprintf(stderr, "%s [y/N] ", question.c_str());
  std::array<char, 16> answer{};
  if (!std::fgets(answer.data(), answer.size(), stdin)) return false;
  const std::string_view text(answer.data());
  return text == "y\n" || text == "Y\n" || text == "yes\n";
}

Progress::Progress(const char* action, const std::string& path, std::uint64_t total)
    : label_(fmt::format("{} {}", action, printable(path))),
      total_(total),
      nextShow_(now() + FIRST_SHOW),
      isActive_(isatty(STDERR_FILENO) != 0 && !progressIsActive.exchange(true)) {}

Progress::~Progress() {
  if (isShown_) std::fputs("\r\x1b[K", stderr);
  if (isActive_) progressIsActive = false;
}

void Progress::advance(std::uint64_t bytes) {
  done_ += bytes;
  if (!isActive_ || now() < nextShow_) return;
  nextShow_ = now() + NEXT_SHOW;
  show();
}

void Progress::show() {
  isShown_ = true;
  const std::string amount = total_ > 0 ? fmt::format("{} %", done_ * 100 / total_)
                                        : fmt::format("{} MiB", done_ / MEBIBYTE);
  std::fprintf(stderr, "\r\x1b[K%s: %s", label_.c_str(), amount.c_str());
}

}  // namespace tarn
