// Whether a printed text is certain to be XML.
//
// The printer writes one root and balanced tags, quotes the value of every attribute and writes the
// five special characters as references. What is left to go wrong are characters, names and the
// declaration. Two passes look at them: one at the bytes, many at a time, and one at the start
// tags. A name of unusual characters could hide the end of its tag, so the second pass ends at the
// first one. Then, as for anything else that is unusual, checkXml() reads the text.

#include "libtarn/util/checkPrinted.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "rapidxml/scan.hpp"
#include "xml/characters.hpp"

namespace libtarn {
namespace util {

namespace {

using Block = rapidxml::internal::wide_block;

// Characters

enum class Characters : std::uint8_t { Ascii, Unicode, Forbidden };

// Whether all `Size` bytes are printable ASCII or line feeds. Compilers make it a loop over blocks:
// masks of eight bits are those of their comparisons.
template <std::size_t Size>
bool arePlain(const char* bytes) {
  signed char other = 0;
  for (std::size_t i = 0; i < Size; ++i) {
    const auto byte = static_cast<signed char>(bytes[i]);  // 0x80 and more are negative
    const signed char isLow = byte < 0x20 ? -1 : 0;
    const signed char isLineFeed = byte == '\n' ? -1 : 0;
    other = static_cast<signed char>(other | (isLow ^ isLineFeed));
  }
  return other == 0;
}

// Returns a position up to which all bytes are plain.
std::size_t skipPlain(std::string_view text, std::size_t at) {
  constexpr std::size_t SIZE = 128;
  while (text.size() - at >= SIZE && arePlain<SIZE>(text.data() + at)) at += SIZE;
  return at;
}

Characters charactersOf(std::string_view text) {
  Characters characters = Characters::Ascii;
  std::size_t at = 0;
  while ((at = skipPlain(text, at)) < text.size()) {
    // Some bytes that are not, and others near them.
    const std::size_t end = at + std::min<std::size_t>(64, text.size() - at);
    while (at < end) {
      const xml::Character character = xml::characterAt(text, at);
      if (character.defect != xml::Defect::None) return Characters::Forbidden;
      if (character.size > 1) characters = Characters::Unicode;
      at += character.size;
    }
  }
  return characters;
}

// Names

enum : unsigned char { NO_NAME, NAME, NAME_START };

constexpr std::array<unsigned char, 256> NAME_BYTES = [] {
  std::array<unsigned char, 256> bytes{};
  for (std::uint32_t c = 0; c < 0x80; ++c) {
    bytes[c] = xml::isNameStart(c) ? NAME_START : xml::isName(c) ? NAME : NO_NAME;
  }
  return bytes;
}();

unsigned char classOf(char c) { return NAME_BYTES[static_cast<unsigned char>(c)]; }

/// The start tags of a printed text.
class Tags {
 public:
  explicit Tags(std::string_view text)
      : at_(text.data()),
        end_(at_ + text.size()),
        blocksEnd_(text.size() < LEAST ? at_ : end_ - LEAST + 1) {}

  /// Returns true if all tags are start tags and end tags of ASCII names, with attributes of
  /// distinct ASCII names.
  bool areCertain() {
    while (findNext('<')) {
      if (!readTag()) return false;
    }
    return true;
  }

 private:
  // As many bytes as are looked at without asking whether there are more.
  static constexpr std::size_t LEAST = std::max<std::size_t>(Block::size, 16);
  // More are not compared with one another, which takes quadratic time.
  static constexpr std::size_t MOST_ATTRIBUTES = 16;

  // At a "<". Nearly all tags are end tags, or begin like one of the others and end soon.
  bool readTag() {
    if (at_ < blocksEnd_) {  // there are as many bytes as any of these has
      if (beginsWith("<p name=\"")) {
        at_ += std::strlen("<p name=\"");
        if (!findNext('"')) return false;
        ++at_;
        return isAt('>') || readOtherAttributes("name");
      }
      // The name of an end tag is that of a start tag.
      if (beginsWith("</") || beginsWith("<p>")) {
        at_ += 2;
        return true;
      }
    }
    if (++at_ != end_ && *at_ == '/') return true;
    return !readName().empty() && readOtherAttributes({});
  }

  bool isAt(char c) const { return at_ != end_ && *at_ == c; }

  template <std::size_t Size>
  bool beginsWith(const char (&start)[Size]) const {
    static_assert(Size <= LEAST);
    return std::memcmp(at_, start, Size - 1) == 0;
  }

  // Goes to the next `c`.
  bool findNext(char c) {
    while (at_ < blocksEnd_) {
      const Block::mask found = Block(at_).equal(c);
      if (Block::any(found)) {
        at_ += Block::first(found);
        return true;
      }
      at_ += Block::size;
    }
    while (at_ != end_ && *at_ != c) ++at_;
    return at_ != end_;
  }

  // Empty when there is none.
  std::string_view readName() {
    const char* const begin = at_;
    if (at_ == end_ || classOf(*at_) != NAME_START) return {};
    while (at_ != end_ && classOf(*at_) != NO_NAME) ++at_;
    return {begin, static_cast<std::size_t>(at_ - begin)};
  }

  // The attributes up to the ">", after one of the name `first` unless that is empty.
  bool readOtherAttributes(std::string_view first) {
    std::size_t count = 0;
    if (!first.empty()) names_[count++] = first;
    for (; isAt(' '); ++count) {
      ++at_;
      const std::string_view name = readName();
      if (name.empty() || count == MOST_ATTRIBUTES) return false;
      for (std::size_t i = 0; i < count; ++i) {
        if (names_[i] == name) return false;
      }
      names_[count] = name;
      if (!readValue()) return false;
    }
    return isAt('>');
  }

  bool readValue() {
    if (!isAt('=')) return false;
    ++at_;
    if (!isAt('"') && !isAt('\'')) return false;
    const char quote = *at_++;
    if (!findNext(quote)) return false;
    ++at_;
    return true;
  }

  const char* at_;
  const char* end_;
  const char* blocksEnd_;                                // up to here LEAST bytes follow
  std::array<std::string_view, MOST_ATTRIBUTES> names_;  // of one element
};

// The declaration

// Returns the size of the declaration, or 0 for one that is unusual. A value in it cannot hold its
// end, since ">" is written as a reference.
std::size_t sizeOfDeclaration(std::string_view printed, Characters characters) {
  constexpr std::string_view END = "?>";
  const std::size_t end = printed.find(END);
  if (end == std::string_view::npos) return 0;
  const std::size_t size = end + END.size();
  std::string document(printed.substr(0, size));
  document += characters == Characters::Unicode ? "<a>\xC3\xA9</a>" : "<a/>";
  return checkXml(document, 0).count == 0 ? size : 0;
}

bool isCertainlyXml(std::string_view printed) {
  const Characters characters = charactersOf(printed);
  if (characters == Characters::Forbidden) return false;
  if (printed.substr(0, 6) != "<?xml ") return false;
  const std::size_t size = sizeOfDeclaration(printed, characters);
  return size > 0 && Tags(printed.substr(size)).areCertain();
}

}  // namespace

XmlFaults checkPrinted(std::string_view printed, std::size_t limit) {
  return isCertainlyXml(printed) ? XmlFaults() : checkXml(printed, limit);
}

}  // namespace util
}  // namespace libtarn
