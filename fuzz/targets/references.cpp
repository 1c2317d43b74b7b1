// References in values and texts: the parser beside a decoder that reads character by character.

#include <algorithm>
#include <optional>

#include "../support/Text.hpp"
#include "../support/check.hpp"
#include "libtarn/DomDocument.hpp"

namespace {

// Removes a reference from the start of `rest` and appends its character. Returns false for one
// that is malformed.
bool decodeNumber(std::string& rest, std::string& out) {
  const bool hexadecimal = rest.compare(0, 3, "&#x") == 0;
  const char* const digits = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  const std::size_t begin = hexadecimal ? 3 : 2;
  const std::size_t end = std::min(rest.find_first_not_of(digits, begin), rest.size());
  if (end == begin) {
    out += '&';
    rest.erase(0, 1);
    return true;
  }
  unsigned long code = 0;
  for (const char c : rest.substr(begin, end - begin)) {
    const int letter = c | 0x20;
    const int digit = c <= '9' ? c - '0' : letter - 'a' + 10;
    code = code * (hexadecimal ? 16 : 10) + static_cast<unsigned long>(digit);
    if (code > 0x10FFFF) return false;
  }
  if (end == rest.size() || rest[end] != ';') return false;
  const auto put = [&out](unsigned long byte) { out += static_cast<char>(byte); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | code >> 6);
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | code >> 12);
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | code >> 18);
    put(0x80 | (code >> 12 & 0x3F));
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  }
  rest.erase(0, end + 1);
  return true;
}

std::optional<std::string> decode(std::string rest) {
  static const std::pair<std::string, char> NAMED[] = {
      {"&amp;", '&'}, {"&apos;", '\''}, {"&quot;", '"'}, {"&lt;", '<'}, {"&gt;", '>'}};
  std::string out;
  while (!rest.empty()) {
    const auto named = std::find_if(std::begin(NAMED), std::end(NAMED), [&](const auto& entry) {
      return rest.compare(0, entry.first.size(), entry.first) == 0;
    });
    if (named != std::end(NAMED)) {
      out += named->second;
      rest.erase(0, named->first.size());
    } else if (rest.compare(0, 2, "&#") == 0) {
      if (!decodeNumber(rest, out)) return std::nullopt;
    } else {
      out += rest.front();
      rest.erase(0, 1);
    }
  }
  return out;
}

void checkValue(const rapidxml::xml_base<char>& record, const std::string& expected) {
  fuzz::check(std::string(record.value(), record.value_size()) == expected, "value");
  fuzz::check(record.value()[record.value_size()] == '\0', "terminator");
}

// `source` replaces "@" in `around`.
void checkIn(const std::string& around, const std::string& source, bool inAttribute) {
  std::string whole = around;
  whole.replace(whole.find('@'), 1, source);
  fuzz::Text text(whole);
  libDomXml::DomDocument document(false);
  const bool parsed = document.rapidParse(text.get()) == 0;
  const std::optional<std::string> expected = decode(source);
  fuzz::check(parsed == expected.has_value(), "reference refused");
  if (!parsed) return;
  const rapidxml::xml_node<char>& element = *document.first_node();
  if (inAttribute) {
    checkValue(*element.first_attribute(), *expected);
  } else {
    checkValue(element, *expected);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;
  std::string source(reinterpret_cast<const char*>(data), size);
  for (char& c : source) {
    // Not tested here: characters that end the value or the text.
    if (c == '\0' || c == '<' || c == '"' || c == '\'') c = '&';
  }
  checkIn("<a b=\"@\"/>", source, true);
  checkIn("<a b = '@'/>", source, true);
  // A value of blanks only would be indentation.
  checkIn("<a>@</a>", "." + source, false);
  return 0;
}
