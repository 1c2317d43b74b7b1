// The second reading: what a conforming parser of XML refuses.
//
// One pass over the text, with a stack of the open elements. The reading itself decides nothing of
// what the library does with a text, so it may be lenient after a fault: each construct says at
// which byte the reading goes on, and always at one behind its own start. Where it guesses, it only
// guesses for texts that have a fault already.
//
// No byte is read more than a few times, whatever the faults. A search for the end of a comment (or
// of its like) that fails is not made again, since there is no such end further on either. A quote
// that is taken to be missing sends the reading back, but never behind the next quote of that kind.
// Names of attributes, and of open elements once an end tag is wrong, are looked up in ordered
// sets of views into the text.

#include "libtarn/util/XmlCheck.hpp"

#include <algorithm>
#include <array>
#include <optional>

#include "xml/AttributeNames.hpp"
#include "xml/OpenElements.hpp"
#include "xml/Recorder.hpp"
#include "xml/characters.hpp"

namespace libtarn {
namespace util {

namespace {

using Kind = XmlFault::Kind;
using xml::AttributeNames;
using xml::Character;
using xml::characterAt;
using xml::Defect;
using xml::isBlank;
using xml::OpenElements;
using xml::quoted;
using xml::Recorder;

constexpr std::size_t NOWHERE = std::string_view::npos;

using ByteSet = std::array<bool, 256>;

constexpr ByteSet setOf(std::string_view bytes) {
  ByteSet set{};
  for (const char c : bytes) set[static_cast<unsigned char>(c)] = true;
  return set;
}

// What ends the name of an element or an attribute, whatever the name consists of.
constexpr ByteSet NAME_ENDS = setOf(" \t\r\n/<>=\"'");
// The same for a processing instruction.
constexpr ByteSet TARGET_ENDS = setOf(" \t\r\n?");
constexpr ByteSet TAG_ENDS = setOf("<>");
constexpr ByteSet QUOTED_ENDS = setOf("<>\"'");
constexpr ByteSet UNQUOTED_ENDS = setOf(" \t\r\n<>");
// What never follows a "<" that was meant to begin a tag.
constexpr ByteSet NO_TAGS = setOf(" \t\r\n<>=&");

constexpr bool contains(const ByteSet& set, char c) { return set[static_cast<unsigned char>(c)]; }

constexpr std::string_view COMMENT = "<!--";
constexpr std::string_view COMMENT_END = "-->";
constexpr std::string_view CDATA = "<![CDATA[";
constexpr std::string_view CDATA_END = "]]>";
constexpr std::string_view DOCTYPE = "<!DOCTYPE";
constexpr std::string_view INSTRUCTION = "<?";
constexpr std::string_view INSTRUCTION_END = "?>";
constexpr std::string_view DECLARATION = "<?xml";

constexpr std::array<std::string_view, 5> ENTITIES = {"amp", "lt", "gt", "quot", "apos"};

// The ASCII characters that `rule` allows.
constexpr ByteSet asciiOf(bool (*rule)(std::uint32_t code)) {
  ByteSet set{};
  for (std::uint32_t c = 0; c < 0x80; ++c) set[c] = rule(c);
  return set;
}
constexpr ByteSet ALLOWED_ASCII = asciiOf(xml::isAllowed);
constexpr ByteSet ASCII_NAME_STARTS = asciiOf(xml::isNameStart);
constexpr ByteSet ASCII_NAMES = asciiOf(xml::isName);
// Bytes that are no fault and begin none, wherever they are.
constexpr ByteSet HARMLESS = [] {
  ByteSet set = ALLOWED_ASCII;
  for (const char c : {'&', '<', ']', '-'}) set[static_cast<unsigned char>(c)] = false;
  return set;
}();

bool isEqualInAnyCase(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [lower](char x, char y) { return lower(x) == lower(y); });
}

// Other encodings than UTF-8, by a byte order mark or by the NUL bytes around a first "<".
const char* wideEncoding(std::string_view text) {
  struct Start {
    std::string_view bytes;
    const char* name;
  };
  using namespace std::string_view_literals;
  static constexpr std::array<Start, 6> STARTS = {{{"\xFF\xFE\0\0"sv, "UTF-32"},
                                                   {"\0\0\xFE\xFF"sv, "UTF-32"},
                                                   {"<\0\0\0"sv, "UTF-32"},
                                                   {"\0\0\0<"sv, "UTF-32"},
                                                   {"\xFF\xFE"sv, "UTF-16"},
                                                   {"\xFE\xFF"sv, "UTF-16"}}};
  for (const Start& start : STARTS) {
    if (text.substr(0, start.bytes.size()) == start.bytes) return start.name;
  }
  if (text.size() < 4) return nullptr;
  const bool isLittleEndian = text[0] == '<' && text[1] == '\0' && text[3] == '\0';
  const bool isBigEndian = text[0] == '\0' && text[1] == '<' && text[2] == '\0';
  return isLittleEndian || isBigEndian ? "UTF-16" : nullptr;
}

class Reading {
 public:
  Reading(std::string_view text, Recorder& recorder)
      : text_(text), recorder_(recorder), open_(text) {}

  void run() {
    if (const char* const encoding = wideEncoding(text_)) {
      report(Kind::Encoding, 0, [&](XmlFault& fault) {
        fault.message = std::string("the text is ") + encoding + "; convert it to UTF-8";
      });
      return;
    }
    if (startsWith("\xEF\xBB\xBF")) at_ = 3;
    if (startsWith(DECLARATION) && isTargetEnd(at_ + DECLARATION.size())) readDeclaration();
    while (at_ < text_.size()) {
      if (text_[at_] == '<') {
        readMarkup();
      } else {
        readTextUpTo(std::min(text_.find('<', at_), text_.size()));
      }
    }
    end();
  }

 private:
  // What a run of characters is part of.
  enum class Content { Text, Value, Comment, Verbatim };

  template <class Describe>
  void report(Kind kind, std::size_t offset, Describe describe) {
    recorder_.report(kind, offset, describe);
  }
  void report(Kind kind, std::size_t offset, const char* message) {
    recorder_.report(kind, offset, [message](XmlFault& fault) { fault.message = message; });
  }
  // With a second place, at `relatedOffset`.
  void report(Kind kind, std::size_t offset, const char* message, std::size_t relatedOffset,
              const char* relatedMessage) {
    recorder_.report(kind, offset, [=](XmlFault& fault) {
      fault.message = message;
      fault.relatedOffset = relatedOffset;
      fault.relatedMessage = relatedMessage;
    });
  }

  // Looking ahead.

  bool startsWith(std::string_view start) const { return startsWith(at_, start); }
  bool startsWith(std::size_t offset, std::string_view start) const {
    return text_.compare(offset, start.size(), start) == 0;
  }
  bool isAt(std::size_t offset, char c) const {
    return offset < text_.size() && text_[offset] == c;
  }
  bool isQuoteAt(std::size_t offset) const { return isAt(offset, '"') || isAt(offset, '\''); }
  bool isBlankAt(std::size_t offset) const {
    return offset < text_.size() && isBlank(text_[offset]);
  }
  bool isTargetEnd(std::size_t offset) const { return isBlankAt(offset) || isAt(offset, '?'); }
  std::size_t behindBlanks(std::size_t offset) const {
    while (isBlankAt(offset)) ++offset;
    return offset;
  }
  // The first byte of `set` from `offset` on, or the end of the text.
  std::size_t findAnyOf(const ByteSet& set, std::size_t offset) const {
    while (offset < text_.size() && !contains(set, text_[offset])) ++offset;
    return offset;
  }
  // `isMissing` remembers that there is none from here on.
  std::size_t findEnd(std::string_view end, std::size_t from, bool& isMissing) const {
    if (isMissing) return NOWHERE;
    const std::size_t found = text_.find(end, from);
    isMissing = found == NOWHERE;
    return found;
  }

  // Characters.

  // Reads one character. Returns its code, or nothing for what is no character of XML.
  std::optional<std::uint32_t> readCharacter() {
    const std::size_t offset = at_;
    const Character character = characterAt(text_, offset);
    at_ += character.size;
    if (character.defect != Defect::None) {
      reportDefect(character, offset);
      return std::nullopt;
    }
    if (character.code >= 0x80 && asciiOffset_ != NO_OFFSET) {
      report(Kind::Encoding, offset, "the text is not in US-ASCII", asciiOffset_,
             "US-ASCII is declared here");
      asciiOffset_ = NO_OFFSET;
    }
    return character.code;
  }

  void reportDefect(const Character& character, std::size_t offset) {
    if (character.defect != Defect::Forbidden) {
      return report(Kind::InvalidUtf8, offset, messageOf(character.defect));
    }
    if (character.code == 0) return report(Kind::NulByte, offset, "a NUL byte");
    report(Kind::ForbiddenCharacter, offset, [&](XmlFault& fault) {
      fault.message =
          "the character " + xml::unicodeName(character.code) + " is not allowed in XML";
    });
  }

  static const char* messageOf(Defect defect) {
    switch (defect) {
      case Defect::CutOff:
        return "not UTF-8: a character of several bytes is cut off";
      case Defect::Overlong:
        return "not UTF-8: a character is written with more bytes than it needs";
      case Defect::BeyondUnicode:
        return "not UTF-8: a character beyond U+10FFFF";
      default:
        return "not UTF-8: no character begins with this byte";
    }
  }

  void readCharactersUpTo(std::size_t end, Content content) {
    for (;;) {
      std::size_t at = at_;
      while (at < end && contains(HARMLESS, text_[at])) ++at;
      at_ = at;
      if (at >= end) return;
      const char c = text_[at];
      if (c == '&' && (content == Content::Text || content == Content::Value)) {
        readReference(end);
      } else if (c == '<' && content == Content::Value) {
        report(Kind::LessThanInValue, at_++, "\"<\" in the value of an attribute; write &lt;");
      } else if (c == ']' && content == Content::Text && startsWith(CDATA_END)) {
        report(Kind::CdataEndInText, at_++, "\"]]>\" in a text; write ]]&gt;");
      } else if (c == '-' && content == Content::Comment) {
        readDashes();
      } else if (contains(ALLOWED_ASCII, c)) {
        ++at_;
      } else {
        readCharacter();
      }
    }
  }

  // Reports a run of dashes once. The one before the end of the comment belongs to that.
  void readDashes() {
    const std::size_t start = at_;
    while (isAt(at_, '-')) ++at_;
    if (at_ - start < 2) return;
    report(Kind::DashesInComment, start, "\"--\" in a comment");
  }

  // Reads up to and with the next ">", but not beyond a "<".
  void readRestOfMarkup() {
    readCharactersUpTo(findAnyOf(TAG_ENDS, at_), Content::Verbatim);
    if (isAt(at_, '>')) ++at_;
  }

  // Names.

  std::string_view nameAhead(const ByteSet& ends) const {
    return text_.substr(at_, findAnyOf(ends, at_) - at_);
  }

  // Reads what stands for a name. Of each name the first wrong character is reported, besides those
  // that are wrong anywhere.
  void readName(std::string_view name) {
    const std::size_t end = at_ + name.size();
    bool isValid = true;
    for (bool isFirst = true; at_ < end; isFirst = false) {
      const std::size_t offset = at_;
      if (contains(isFirst ? ASCII_NAME_STARTS : ASCII_NAMES, text_[offset])) {
        ++at_;
        continue;
      }
      const std::optional<std::uint32_t> code = readCharacter();
      if (!code || !isValid) continue;
      isValid = isFirst ? xml::isNameStart(*code) : xml::isName(*code);
      if (!isValid) reportName(offset, isFirst);
    }
  }

  void reportName(std::size_t offset, bool isFirst) {
    report(Kind::InvalidName, offset, [&](XmlFault& fault) {
      const std::size_t size = characterAt(text_, offset).size;
      fault.message = "\"" + quoted(text_.substr(offset, size)) +
                      (isFirst ? "\" cannot begin a name" : "\" cannot be in a name");
    });
  }

  // Texts and references.

  void readTextUpTo(std::size_t end) {
    if (open_.isEmpty()) {
      readOutsideTextUpTo(end);
    } else {
      readCharactersUpTo(end, Content::Text);
    }
  }

  void readOutsideTextUpTo(std::size_t end) {
    for (bool isReported = false; at_ < end;) {
      if (!isReported && !isBlank(text_[at_]) && characterAt(text_, at_).defect == Defect::None) {
        report(Kind::TextOutsideRoot, at_, "text outside the root element");
        isReported = true;
      }
      readCharacter();
    }
  }

  // A "&" that begins no reference counts as a character of its own.
  void readReference(std::size_t end) {
    const std::size_t behind =
        isAt(at_ + 1, '#') ? readNumericReference(end) : readEntityReference(end);
    if (behind == NOWHERE) {
      report(Kind::MalformedReference, at_, "\"&\" begins no reference; write &amp;");
      ++at_;
    } else {
      at_ = behind;
    }
  }

  // Returns the position behind the reference, or NOWHERE.
  std::size_t readNumericReference(std::size_t end) {
    const bool isHexadecimal = isAt(at_ + 2, 'x');
    const std::size_t digits = at_ + (isHexadecimal ? 3 : 2);
    const std::uint32_t base = isHexadecimal ? 16 : 10;
    constexpr std::uint32_t TOO_LARGE = 0x110000;
    std::uint32_t code = 0;
    std::size_t at = digits;
    for (; at < end && digitValue(text_[at]) < base; ++at) {
      code = std::min(code * base + digitValue(text_[at]), TOO_LARGE);
    }
    if (at == digits || at >= end || text_[at] != ';') return NOWHERE;
    if (!xml::isAllowed(code)) {
      report(Kind::ForbiddenReference, at_, [&](XmlFault& fault) {
        fault.message =
            quoted(text_.substr(at_, at + 1 - at_)) + " refers to " +
            (code == TOO_LARGE ? "no character"
                               : xml::unicodeName(code) + ", which is not allowed in XML");
      });
    }
    return at + 1;
  }

  static std::uint32_t digitValue(char c) {
    if (c >= '0' && c <= '9') return static_cast<std::uint32_t>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<std::uint32_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<std::uint32_t>(c - 'A' + 10);
    return 16;
  }

  std::size_t readEntityReference(std::size_t end) {
    const std::size_t begin = at_ + 1;
    std::size_t at = begin;
    while (at < end) {
      const Character character = characterAt(text_, at);
      if (character.defect != Defect::None) break;
      if (!(at == begin ? xml::isNameStart(character.code) : xml::isName(character.code))) break;
      at += character.size;
    }
    if (at == begin || at >= end || text_[at] != ';') return NOWHERE;
    const std::string_view name = text_.substr(begin, at - begin);
    const bool isKnown = std::find(ENTITIES.begin(), ENTITIES.end(), name) != ENTITIES.end();
    if (!isKnown && !hasDoctype_) {
      report(Kind::UnknownEntity, at_, [&](XmlFault& fault) {
        fault.message = "the entity &" + quoted(name) + "; is not declared";
      });
    }
    return at + 1;
  }

  // Markup.

  void readMarkup() {
    if (isAt(at_ + 1, '/')) return readEndTag();
    if (isAt(at_ + 1, '?')) return readInstruction();
    if (isAt(at_ + 1, '!')) return readExclamation();
    if (beginsTag()) return readStartTag();
    report(Kind::LessThanInText, at_, "\"<\" begins no tag; write &lt;");
    ++at_;
    readTextUpTo(std::min(text_.find('<', at_), text_.size()));
  }

  void readExclamation() {
    if (startsWith(COMMENT)) return readComment();
    if (startsWith(CDATA)) return readCdata();
    if (startsWith(DOCTYPE)) return readDoctype();
    report(Kind::UnknownMarkup, at_, "\"<!\" begins no comment, CDATA section or DOCTYPE");
    at_ += 2;
    readRestOfMarkup();
  }

  // A name that begins wrongly is one only where a tag ends, as in "<1>" but not in "1 <2".
  bool beginsTag() const {
    const std::size_t name = at_ + 1;
    if (name == text_.size() || contains(NO_TAGS, text_[name])) return false;
    if (xml::isNameStart(characterAt(text_, name).code)) return true;
    return isAt(findAnyOf(TAG_ENDS, name), '>');
  }

  void readComment() {
    const std::size_t end = findEnd(COMMENT_END, at_ + COMMENT.size(), hasNoCommentEnd_);
    if (end == NOWHERE)
      return readUnclosed(Kind::UnclosedComment, COMMENT, "the comment has no end");
    at_ += COMMENT.size();
    readCharactersUpTo(end, Content::Comment);
    // Dashes are read as a run, those of the end included.
    at_ = end + COMMENT_END.size();
  }

  void readCdata() {
    if (open_.isEmpty()) {
      report(Kind::TextOutsideRoot, at_, "a CDATA section outside the root element");
    }
    const std::size_t end = findEnd(CDATA_END, at_ + CDATA.size(), hasNoCdataEnd_);
    if (end == NOWHERE) {
      report(Kind::UnclosedCdata, at_, "the CDATA section has no end");
      at_ += CDATA.size();
      return;
    }
    at_ += CDATA.size();
    readCharactersUpTo(end, Content::Verbatim);
    at_ = end + CDATA_END.size();
  }

  // What has no end is taken to end with its first ">".
  void readUnclosed(Kind kind, std::string_view start, const char* message) {
    report(kind, at_, message);
    at_ += start.size();
    readRestOfMarkup();
  }

  void readInstruction() {
    const std::size_t start = at_;
    const std::size_t end = findEnd(INSTRUCTION_END, start + 2, hasNoInstructionEnd_);
    if (end == NOWHERE) {
      return readUnclosed(Kind::UnclosedInstruction, INSTRUCTION,
                          "the processing instruction has no end");
    }
    at_ += INSTRUCTION.size();
    const std::string_view target = nameAhead(TARGET_ENDS);
    if (target.empty()) {
      report(Kind::InvalidName, at_, "the processing instruction has no name");
    } else if (target == "xml") {
      report(Kind::MisplacedDeclaration, start,
             "the XML declaration is not at the start of the text");
    } else if (isEqualInAnyCase(target, "xml")) {
      report(Kind::ReservedTarget, start, [&](XmlFault& fault) {
        fault.message = "\"" + std::string(target) + "\" is a reserved name";
      });
    }
    readName(target);
    if (at_ < end && !isBlankAt(at_) && !target.empty()) reportName(at_, false);
    readCharactersUpTo(end, Content::Verbatim);
    at_ = end + INSTRUCTION_END.size();
  }

  // The declaration at the start of the text.

  void readDeclaration() {
    at_ += DECLARATION.size();
    const char* const fault = declarationFault();
    if (!fault) return;
    report(Kind::MalformedDeclaration, at_, fault);
    readRestOfMarkup();
  }

  // Reads the declaration up to its end, or up to a fault, whose message it returns.
  const char* declarationFault() {
    std::string_view value;
    if (!readPseudoAttribute("version", value)) return "the XML declaration has no version";
    if (!isVersion(value)) return "the version of the XML declaration is not 1.0";
    readQuoted(value);
    if (readPseudoAttribute("encoding", value)) {
      if (!isEncodingName(value)) return "the encoding of the XML declaration is malformed";
      checkEncoding(value);
      readQuoted(value);
    }
    if (readPseudoAttribute("standalone", value)) {
      if (value != "yes" && value != "no") return R"("standalone" is neither "yes" nor "no")";
      readQuoted(value);
    }
    at_ = behindBlanks(at_);
    if (!startsWith(INSTRUCTION_END)) return "the XML declaration is malformed";
    at_ += INSTRUCTION_END.size();
    return nullptr;
  }

  // Reads blanks, `name`, "=" and the opening quote, if they are what follows, and gives what
  // stands in the quotes.
  bool readPseudoAttribute(std::string_view name, std::string_view& value) {
    std::size_t at = behindBlanks(at_);
    if (at == at_ || !startsWith(at, name)) return false;
    at = behindBlanks(at + name.size());
    if (!isAt(at, '=')) return false;
    at = behindBlanks(at + 1);
    if (!isQuoteAt(at)) return false;
    const std::size_t end = findAnyOf(QUOTED_ENDS, at + 1);
    if (!isAt(end, text_[at])) return false;
    at_ = at + 1;
    value = text_.substr(at_, end - at_);
    return true;
  }
  void readQuoted(std::string_view value) { at_ += value.size() + 1; }

  static bool isVersion(std::string_view value) {
    return value.size() > 2 && value.substr(0, 2) == "1." &&
           std::all_of(value.begin() + 2, value.end(),
                       [](char c) { return xml::isAsciiDigit(static_cast<unsigned char>(c)); });
  }

  static bool isEncodingName(std::string_view value) {
    const auto isLetter = [](char c) { return xml::isAsciiLetter(static_cast<unsigned char>(c)); };
    return !value.empty() && isLetter(value.front()) &&
           std::all_of(value.begin(), value.end(), [&](char c) {
             return isLetter(c) || xml::isAsciiDigit(static_cast<unsigned char>(c)) || c == '.' ||
                    c == '_' || c == '-';
           });
  }

  void checkEncoding(std::string_view name) {
    if (isEqualInAnyCase(name, "UTF-8")) return;
    if (isEqualInAnyCase(name, "US-ASCII")) {
      asciiOffset_ = at_;
      return;
    }
    report(Kind::Encoding, at_, [&](XmlFault& fault) {
      fault.message = "the declared encoding is " + quoted(name) + "; convert the text to UTF-8";
    });
  }

  // The document type.

  void readDoctype() {
    const std::size_t start = at_;
    if (rootOffset_ != NO_OFFSET) {
      report(Kind::MisplacedDoctype, start, "a DOCTYPE after the start of the root element");
    } else if (hasDoctype_) {
      report(Kind::MisplacedDoctype, start, "a second DOCTYPE");
    }
    hasDoctype_ = true;
    std::size_t fault = NOWHERE;
    const std::size_t end = hasNoDoctypeEnd_ ? NOWHERE : doctypeEnd(start + DOCTYPE.size(), fault);
    hasNoDoctypeEnd_ = end == NOWHERE;
    if (end == NOWHERE)
      return readUnclosed(Kind::UnclosedDoctype, DOCTYPE, "the DOCTYPE has no end");
    at_ += DOCTYPE.size();
    if (!isBlankAt(at_)) fault = at_;
    if (fault != NOWHERE) {
      readCharactersUpTo(fault, Content::Verbatim);
      report(Kind::MalformedDoctype, at_, "the DOCTYPE is malformed");
    }
    readCharactersUpTo(end, Content::Verbatim);
    ++at_;
  }

  // Where the ">" is that ends the document type, or NOWHERE. `fault` is the first place that
  // breaks the nesting of brackets, if there is one.
  std::size_t doctypeEnd(std::size_t at, std::size_t& fault) const {
    bool isInSubset = false;
    bool isInDeclaration = false;
    const auto toggle = [&](bool& state, bool expected, bool isAllowed) {
      if ((state != expected || !isAllowed) && fault == NOWHERE) fault = at;
      state = !expected;
    };
    while (at < text_.size()) {
      const char c = text_[at];
      const bool isBetween = isInSubset && !isInDeclaration;
      if (isBetween && startsWith(at, COMMENT)) {
        at = endOf(at, COMMENT, COMMENT_END);
      } else if (isBetween && startsWith(at, INSTRUCTION)) {
        at = endOf(at, INSTRUCTION, INSTRUCTION_END);
      } else if ((c == '"' || c == '\'') && !isBetween) {
        at = endOf(at, text_.substr(at, 1), text_.substr(at, 1));
      } else {
        if (c == '>' && !isInSubset && !isInDeclaration) return at;
        if (c == '<') toggle(isInDeclaration, false, isInSubset);
        if (c == '>') toggle(isInDeclaration, true, isInSubset);
        if (c == '[') toggle(isInSubset, false, !isInDeclaration);
        if (c == ']') toggle(isInSubset, true, !isInDeclaration);
        ++at;
      }
    }
    return NOWHERE;
  }

  // The position behind the next `end`, or the end of the text.
  std::size_t endOf(std::size_t at, std::string_view start, std::string_view end) const {
    const std::size_t found = text_.find(end, at + start.size());
    return found == NOWHERE ? text_.size() : found + end.size();
  }

  // Tags.

  void readStartTag() {
    const std::size_t start = at_;
    noteRoot();
    ++at_;
    const std::string_view name = nameAhead(NAME_ENDS);
    readName(name);
    if (readAttributes(start)) open_.push(start, name.size());
  }

  void noteRoot() {
    if (!open_.isEmpty()) return;
    if (rootOffset_ == NO_OFFSET) {
      rootOffset_ = at_;
    } else {
      report(Kind::SecondRoot, at_, "a second root element", rootOffset_, "the first one is here");
    }
  }

  // Reads the rest of the start tag at `tag`. Returns whether the element is open behind it.
  bool readAttributes(std::size_t tag) {
    attributes_.clear();
    for (;;) {
      const bool isSeparate = isBlankAt(at_);
      at_ = behindBlanks(at_);
      if (at_ == text_.size() || text_[at_] == '<') {
        reportUnclosedTag(tag);
        return at_ < text_.size();
      }
      if (text_[at_] == '>') {
        ++at_;
        return true;
      }
      if (text_[at_] != '/') {
        readAttribute(isSeparate);
      } else if (readSlash()) {
        return false;
      }
    }
  }

  void reportUnclosedTag(std::size_t tag) {
    report(Kind::UnclosedTag, at_, "\">\" is missing", tag, "the tag begins here");
  }

  // Reads a "/" and, when that is what it is for, the end of the tag.
  bool readSlash() {
    const bool isEnd = isAt(at_ + 1, '>');
    if (!isEnd) report(Kind::MalformedTag, at_, R"("/" is not followed by ">")");
    const std::size_t end = behindBlanks(at_ + 1);
    if (!isAt(end, '>')) {
      ++at_;
      return false;
    }
    at_ = end + 1;
    return true;
  }

  void readAttribute(bool isSeparate) {
    const std::string_view name = nameAhead(NAME_ENDS);
    if (name.empty()) {
      report(Kind::MalformedTag, at_, "the name of an attribute is missing");
    } else {
      if (!isSeparate) report(Kind::MissingBlank, at_, "a blank is missing before an attribute");
      noteAttribute(name);
      readName(name);
    }
    const std::size_t next = behindBlanks(at_);
    if (isAt(next, '=')) {
      at_ = behindBlanks(next + 1);
    } else {
      if (!name.empty()) reportMissingEquals();
      // The blanks also separate this from the next attribute.
      if (!isQuoteAt(next)) return;
      at_ = next;
    }
    readValue();
  }

  void reportMissingEquals() {
    report(Kind::MissingEquals, at_, "\"=\" is missing after an attribute's name");
  }

  void noteAttribute(std::string_view name) {
    const std::optional<std::string_view> earlier = attributes_.addOrFind(name);
    if (!earlier) return;
    report(Kind::DuplicateAttribute, at_, [&](XmlFault& fault) {
      fault.message = "the attribute " + quoted(name) + " comes twice";
      fault.relatedOffset = static_cast<std::size_t>(earlier->data() - text_.data());
      fault.relatedMessage = "the first one is here";
    });
  }

  void readValue() {
    if (!isQuoteAt(at_)) {
      report(Kind::MissingQuote, at_, "the value of an attribute has no quotes");
      return readUnquoted(UNQUOTED_ENDS);
    }
    const std::size_t begin = at_ + 1;
    const std::size_t end = text_.find(text_[at_], begin);
    if (end == NOWHERE || endsAnotherValue(begin, end)) {
      report(Kind::MissingQuote, at_, "the value of an attribute has no closing quote");
      ++at_;
      return readUnquoted(TAG_ENDS);
    }
    at_ = begin;
    readCharactersUpTo(end, Content::Value);
    ++at_;
  }

  // Whether the quote at `end` opens a value further on, as the second one does in
  // "<a b="x><c d="y">".
  bool endsAnotherValue(std::size_t begin, std::size_t end) const {
    const std::string_view value = text_.substr(begin, end - begin);
    const auto last = std::find_if_not(value.rbegin(), value.rend(), isBlank);
    return last != value.rend() && *last == '=' && value.find('<') != NOWHERE;
  }

  // Reads a value without a closing quote: up to one of `ends`, and not over the end of the tag.
  void readUnquoted(const ByteSet& ends) {
    std::size_t end = findAnyOf(ends, at_);
    if (isAt(end, '>') && end > at_ && text_[end - 1] == '/') --end;
    readCharactersUpTo(end, Content::Value);
  }

  void readEndTag() {
    const std::size_t start = at_;
    at_ += 2;
    const std::string_view name = nameAhead(NAME_ENDS);
    close(name, start);
    readName(name);
    at_ = behindBlanks(at_);
    if (at_ == text_.size() || text_[at_] == '<') return reportUnclosedTag(start);
    if (text_[at_] != '>') {
      report(Kind::MalformedTag, at_, "\">\" is missing; an end tag has no attributes");
    }
    readRestOfMarkup();
  }

  void close(std::string_view name, std::size_t endTag) {
    if (open_.isEmpty()) {
      return report(Kind::EndTagWithoutStart, endTag, [&](XmlFault& fault) {
        fault.message = "</" + quoted(name) + "> while no element is open";
      });
    }
    if (open_.name(open_.innermost()) != name && !open_.contains(name)) {
      reportEndTag(Kind::EndTagMismatched, endTag, "</" + quoted(name) + ">");
      open_.innermost().isReported = true;
      return;
    }
    while (open_.name(open_.innermost()) != name) closeUnended(endTag, "</" + quoted(name) + ">");
    open_.pop();
  }

  // An element whose end tag was reported as another one has had its fault.
  void closeUnended(std::size_t offset, const std::string& found) {
    if (!open_.innermost().isReported) reportEndTag(Kind::EndTagMissing, offset, found);
    open_.pop();
  }

  void reportEndTag(Kind kind, std::size_t offset, const std::string& found) {
    report(kind, offset, [&](XmlFault& fault) {
      const OpenElements::Element& element = open_.innermost();
      const std::string tag = quotedTag(element.offset);
      fault.message =
          "</" + quoted(open_.name(element)) + "> expected for " + tag + ", found " + found;
      fault.relatedOffset = element.offset;
      fault.relatedMessage = tag + " is opened here";
    });
  }

  // The start tag at `offset`, as long as a message may quote it.
  std::string quotedTag(std::size_t offset) const {
    constexpr std::size_t ENOUGH = 64;  // more than is quoted
    const std::size_t most = std::min(text_.size(), offset + ENOUGH);
    char quote = '\0';
    std::size_t end = offset;
    for (; end < most && (quote != '\0' || text_[end] != '>'); ++end) {
      if (text_[end] == quote) {
        quote = '\0';
      } else if (quote == '\0' && isQuoteAt(end)) {
        quote = text_[end];
      }
    }
    return quoted(text_.substr(offset, end + 1 - offset));
  }

  void end() {
    while (!open_.isEmpty()) closeUnended(text_.size(), "the end of the text");
    if (rootOffset_ == NO_OFFSET) report(Kind::NoRoot, text_.size(), "there is no root element");
  }

  const std::string_view text_;
  Recorder& recorder_;
  OpenElements open_;
  AttributeNames attributes_;
  std::size_t at_ = 0;
  std::size_t rootOffset_ = NO_OFFSET;
  std::size_t asciiOffset_ = NO_OFFSET;  // where US-ASCII was declared, until it is not kept
  bool hasDoctype_ = false;
  bool hasNoCommentEnd_ = false;
  bool hasNoCdataEnd_ = false;
  bool hasNoInstructionEnd_ = false;
  bool hasNoDoctypeEnd_ = false;
};

XmlFaults read(std::string_view text, Recorder::Records records, std::size_t limit) {
  Recorder recorder(records, limit);
  Reading(text, recorder).run();
  return recorder.take();
}

}  // namespace

XmlFaults checkXml(std::string_view text, std::size_t limit) {
  return read(text, Recorder::Records::Everything, limit);
}

XmlFaults checkXmlTags(std::string_view text, std::size_t limit) {
  return read(text, Recorder::Records::EndTags, limit);
}

}  // namespace util
}  // namespace libtarn
