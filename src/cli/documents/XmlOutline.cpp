#include "documents/XmlOutline.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace tarn {

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr std::string_view ENDS_OF_TAG = {" \t\n\r/>?", 7};
constexpr std::string_view ENDS_OF_ATTRIBUTE_NAME = {" \t\n\r!/<=>?", 10};

std::size_t skipBlanks(std::string_view text, std::size_t at) {
  while (at < text.size() && isXmlBlank(text[at])) ++at;
  return at;
}

std::size_t endOfName(std::string_view text, std::size_t at, std::string_view ends) {
  return std::min(text.find_first_of(ends, at), text.size());
}

// Reads the attribute at `at`, if there is one, and moves `at` to what follows.
bool readAttribute(std::string_view text, std::size_t& at, XmlOutline::Attribute& attribute) {
  const std::size_t nameEnd = endOfName(text, at, ENDS_OF_ATTRIBUTE_NAME);
  if (nameEnd == at) return false;
  std::size_t next = skipBlanks(text, nameEnd);
  if (next >= text.size() || text[next] != '=') return false;
  next = skipBlanks(text, next + 1);
  if (next >= text.size()) return false;
  const std::size_t close = text.find(text[next], next + 1);
  if ((text[next] != '"' && text[next] != '\'') || close == npos) return false;
  attribute.name = text.substr(at, nameEnd - at);
  attribute.value = text.substr(next + 1, close - next - 1);
  attribute.begin = at;
  attribute.end = close + 1;
  at = skipBlanks(text, close + 1);
  return true;
}

void appendUtf8(std::string& out, std::uint32_t code) {
  const auto put = [&out](std::uint32_t byte) { out += static_cast<char>(byte); };
  const auto putRest = [&](unsigned int shift) { put(0x80U | (code >> shift & 0x3FU)); };
  if (code < 0x80U) return put(code);
  if (code < 0x800U) {
    put(0xC0U | code >> 6U);
  } else if (code < 0x10000U) {
    put(0xE0U | code >> 12U);
    putRest(6);
  } else {
    put(0xF0U | code >> 18U);
    putRest(12);
    putRest(6);
  }
  putRest(0);
}

int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 16;
}

// Returns the length of the numeric reference, 0 for none.
std::size_t appendNumeric(std::string& out, std::string_view raw) {
  const bool isHexadecimal = raw.size() > 2 && raw[2] == 'x';
  const int base = isHexadecimal ? 16 : 10;
  std::size_t at = isHexadecimal ? 3 : 2;
  std::uint32_t code = 0;
  while (at < raw.size() && digitOf(raw[at]) < base && code <= 0x10FFFFU) {
    code = code * static_cast<std::uint32_t>(base) + static_cast<std::uint32_t>(digitOf(raw[at++]));
  }
  if (at >= raw.size() || raw[at] != ';') return 0;
  appendUtf8(out, code);
  return at + 1;
}

std::size_t appendReference(std::string& out, std::string_view raw) {
  constexpr std::array<std::pair<std::string_view, char>, 5> NAMED = {
      {{"&amp;", '&'}, {"&apos;", '\''}, {"&quot;", '"'}, {"&lt;", '<'}, {"&gt;", '>'}}};
  if (raw.size() > 1 && raw[1] == '#') return appendNumeric(out, raw);
  for (const auto& [name, character] : NAMED) {
    if (raw.substr(0, name.size()) != name) continue;
    out += character;
    return name.size();
  }
  return 0;
}

}  // namespace

/// Reads a text from tag to tag. The elements that are open are a stack of numbers.
class OutlineReader {
 public:
  OutlineReader(std::string_view text, std::vector<XmlOutline::Element>& elements)
      : text_(text), elements_(elements) {}

  bool read() {
    for (;;) {
      const std::size_t next = text_.find('<', at_);
      if (next == npos) return open_.empty() && !elements_.empty();
      if (!open_.empty()) addText(next);
      at_ = next;
      if (!readMarkup()) return false;
    }
  }

 private:
  struct Open {
    std::uint32_t number;
    std::uint32_t lastChild;
    bool hasText;  // blank or not
  };

  static std::uint32_t narrow(std::size_t offset) { return static_cast<std::uint32_t>(offset); }

  bool startsWith(std::string_view mark) const { return text_.substr(at_, mark.size()) == mark; }

  bool skipBehind(std::string_view mark) {
    const std::size_t found = text_.find(mark, at_);
    at_ = found + mark.size();
    return found != npos;
  }

  // The first text with a character other than white space is the value.
  void addText(std::size_t end) {
    XmlOutline::Element& element = elements_[open_.back().number];
    const bool isFirst = !std::exchange(open_.back().hasText, true);
    if (element.hasValue) return;
    element.hasValue = skipBlanks(text_.substr(0, end), at_) < end;
    if (!isFirst && !element.hasValue) return;
    element.valueBegin = narrow(at_);
    element.valueEnd = narrow(end);
  }

  bool readMarkup() {
    if (startsWith("<!--")) {
      at_ += 4;
      return skipBehind("-->");
    }
    if (startsWith("<![CDATA[")) return skipBehind("]]>");
    if (startsWith("<!DOCTYPE") && at_ + 9 < text_.size() && isXmlBlank(text_[at_ + 9])) {
      return skipDoctype();
    }
    if (startsWith("<!")) return skipBehind(">");
    if (startsWith("<?")) {
      at_ += 2;
      return skipBehind("?>");
    }
    return startsWith("</") ? close() : open();
  }

  bool skipDoctype() {
    std::size_t depth = 0;
    for (; at_ < text_.size(); ++at_) {
      if (text_[at_] == '[') ++depth;
      if (text_[at_] == ']' && depth > 0) --depth;
      if (text_[at_] != '>' || depth > 0) continue;
      ++at_;
      return true;
    }
    return false;
  }

  bool open() {
    if (open_.empty() && !elements_.empty()) return false;
    const std::uint32_t number = narrow(elements_.size());
    if (!open_.empty()) {
      std::uint32_t& last = open_.back().lastChild;
      (last == XmlOutline::NONE ? elements_[open_.back().number].firstChild
                                : elements_[last].nextSibling) = number;
      last = number;
    }
    XmlOutline::Element element;
    element.begin = narrow(at_);
    at_ = skipBlanks(text_, endOfName(text_, at_ + 1, ENDS_OF_TAG));
    XmlOutline::Attribute attribute;
    while (readAttribute(text_, at_, attribute)) {
    }
    const bool isEmptyTag = startsWith("/>");
    if (!isEmptyTag && !startsWith(">")) return false;
    at_ += isEmptyTag ? 2 : 1;
    element.contentBegin = element.contentEnd = element.end = narrow(at_);
    element.valueBegin = element.valueEnd = narrow(at_);
    // No element that has an end tag ends where its content begins.
    if (!isEmptyTag) {
      element.end = 0;
      open_.push_back({number, XmlOutline::NONE, false});
    }
    elements_.push_back(element);
    return true;
  }

  bool close() {
    if (open_.empty()) return false;
    XmlOutline::Element& element = elements_[open_.back().number];
    element.contentEnd = narrow(at_);
    if (!skipBehind(">")) return false;
    element.end = narrow(at_);
    open_.pop_back();
    return true;
  }

  std::string_view text_;
  std::vector<XmlOutline::Element>& elements_;
  std::vector<Open> open_;
  std::size_t at_ = 0;
};

std::optional<XmlOutline> XmlOutline::read(std::string_view text) {
  if (text.size() >= NONE) return std::nullopt;
  XmlOutline outline;
  outline.text_ = text;
  if (!OutlineReader(text, outline.elements_).read()) return std::nullopt;
  return outline;
}

std::string_view XmlOutline::tag(const Element& element) const {
  const std::size_t begin = element.begin + std::size_t{1};
  return between(begin, endOfName(text_, begin, ENDS_OF_TAG));
}

std::vector<XmlOutline::Attribute> XmlOutline::attributes(const Element& element) const {
  std::vector<Attribute> list;
  const std::string_view upToContent = text_.substr(0, element.contentBegin);
  std::size_t at = endOfName(text_, element.begin + std::size_t{1}, ENDS_OF_TAG);
  at = skipBlanks(upToContent, at);
  Attribute attribute;
  while (readAttribute(upToContent, at, attribute)) list.push_back(attribute);
  return list;
}

std::vector<std::uint32_t> XmlOutline::children(const Element& element) const {
  std::vector<std::uint32_t> list;
  for (std::uint32_t child = element.firstChild; child != NONE;
       child = elements_[child].nextSibling) {
    list.push_back(child);
  }
  return list;
}

std::string withoutReferences(std::string_view raw) {
  std::string out;
  for (std::size_t at = 0; at < raw.size();) {
    const std::size_t next = std::min(raw.find('&', at), raw.size());
    out += raw.substr(at, next - at);
    at = next;
    if (at == raw.size()) break;
    const std::size_t length = appendReference(out, raw.substr(at));
    if (length == 0) out += '&';
    at += std::max<std::size_t>(length, 1);
  }
  return out;
}

}  // namespace tarn
