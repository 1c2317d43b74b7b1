#include "output/displayWidth.hpp"

#include <algorithm>
#include <cwchar>

namespace tarn {

namespace {

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

}  // namespace tarn
