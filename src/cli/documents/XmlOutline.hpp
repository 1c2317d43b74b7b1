#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarn {

/// Where the elements of a text are, as the library's parser reads it: without comments, CDATA
/// sections and instructions, and with end tags that close whatever is open. For a text that loads.
///
/// Borrows the text. Elements are numbered in the order of their start tags, the root is 0. Takes
/// time and memory as the text is long.
class XmlOutline {
 public:
  static constexpr std::uint32_t NONE = UINT32_MAX;

  /// Byte offsets in the text, and links to other elements or NONE.
  struct Element {
    std::uint32_t begin = 0;         ///< Of "<".
    std::uint32_t contentBegin = 0;  ///< Behind the start tag.
    std::uint32_t contentEnd = 0;    ///< Of the end tag; of `<x/>` its end.
    std::uint32_t end = 0;           ///< Behind the end tag.
    std::uint32_t valueBegin = 0;    ///< Of the text that is the value; without one, the first.
    std::uint32_t valueEnd = 0;
    std::uint32_t firstChild = NONE;
    std::uint32_t nextSibling = NONE;
    bool hasValue = false;

    bool isEmptyTag() const { return contentBegin == end; }
  };

  /// An attribute in a start tag. Offsets in the text; the value is between its quotes.
  struct Attribute {
    std::string_view name;
    std::string_view value;  ///< As it is written.
    std::size_t begin = 0;   ///< Of the name.
    std::size_t end = 0;     ///< Behind the closing quote.
  };

  /// Returns nothing for a text that has another structure than documents that load.
  static std::optional<XmlOutline> read(std::string_view text);

  std::string_view text() const { return text_; }
  const Element& operator[](std::uint32_t number) const { return elements_[number]; }

  std::string_view tag(const Element& element) const;
  std::vector<Attribute> attributes(const Element& element) const;
  std::vector<std::uint32_t> children(const Element& element) const;
  std::string_view between(std::size_t begin, std::size_t end) const {
    return text_.substr(begin, end - begin);
  }

 private:
  friend class OutlineReader;

  std::string_view text_;
  std::vector<Element> elements_;
};

/// Returns a value or an attribute's value with the characters that its references stand for.
std::string withoutReferences(std::string_view raw);

/// True for the characters that XML counts as white space.
constexpr bool isXmlBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace tarn
