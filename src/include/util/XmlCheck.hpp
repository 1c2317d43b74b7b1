#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "libtarn/TarnApi.hpp"
#include "libtarn/util/TextPosition.hpp"

namespace libtarn {
namespace util {

/// Something in a text for which a conforming parser of XML 1.0 refuses it.
struct XmlFault {
  /// What kind of fault it is.
  enum class Kind : std::uint8_t {
    // The whole text.
    Encoding,  ///< UTF-16, UTF-32, another declared encoding, or not in the declared US-ASCII.
    NoRoot,
    SecondRoot,
    TextOutsideRoot,  ///< Also a CDATA section or a reference there.

    // Characters, wherever they are.
    NulByte,
    ForbiddenCharacter,  ///< U+0001 to U+001F but TAB, LF and CR; surrogates; U+FFFE and U+FFFF.
    InvalidUtf8,

    // Tags.
    EndTagMismatched,    ///< Of no element that is open; it is ignored.
    EndTagMissing,       ///< An outer element, or the text, ends before.
    EndTagWithoutStart,  ///< While no element is open.
    UnclosedTag,         ///< Without ">".
    MalformedTag,        ///< What no other kind says.
    InvalidName,
    MissingBlank,  ///< Between attributes.
    MissingEquals,
    MissingQuote,  ///< At either end of an attribute's value.
    DuplicateAttribute,
    LessThanInValue,

    // Texts and references.
    LessThanInText,  ///< That begins no markup.
    CdataEndInText,  ///< "]]>".
    MalformedReference,
    UnknownEntity,
    ForbiddenReference,  ///< To a character that no text may have.

    // Other markup.
    UnknownMarkup,  ///< "<!" that begins nothing known.
    DashesInComment,
    UnclosedComment,
    UnclosedCdata,
    UnclosedInstruction,
    ReservedTarget,  ///< A processing instruction named "XML" or in another mix of cases.
    MalformedDeclaration,
    MisplacedDeclaration,  ///< Not at the very start of the text.
    MalformedDoctype,
    MisplacedDoctype,
    UnclosedDoctype,
  };

  /// One of the kinds above.
  Kind kind = Kind::Encoding;
  /// What is wrong, in words, without a place. Valid UTF-8 without control characters; what it
  /// quotes of the text is cut to a bounded length.
  std::string message;
  /// Where, in bytes from the start of the text: a byte order mark counts.
  std::size_t offset = 0;
  /// A second place: where an element without end tag was opened, where an attribute stood first.
  /// NO_OFFSET when one place says all.
  std::size_t relatedOffset = NO_OFFSET;
  /// What is at the second place; empty without one.
  std::string relatedMessage;
};

/// The faults of a text.
struct XmlFaults {
  /// The first ones, in the order of their offsets.
  std::vector<XmlFault> list;
  /// How many there are, with those that the list has no room for.
  std::size_t count = 0;
};

/// Finds what a conforming parser of XML 1.0 (fifth edition, without namespaces) refuses in `text`,
/// which the library's own parser may accept. Lists the first `limit` faults and counts all: after
/// a fault the reading goes on where the text most likely does.
///
/// `text` is as it was read: not yet parsed in place, and without the terminating NUL, since a NUL
/// is a fault. It must be in UTF-8 or US-ASCII; of one in UTF-16 or UTF-32, known by its byte order
/// mark or by how it writes "<", that is the one fault. Of a document type declaration only the
/// nesting of brackets, quotes and comments is checked, and the characters: not its grammar,
/// whether it declares an entity that is used, nor what its entities hold. With one, every entity
/// counts as known.
///
/// Takes time as n log n at most in the length of the text, and memory for the open elements, for
/// the attributes of one element and for the list. Nothing recurses; std::bad_alloc is the one
/// exception.
TARN_API XmlFaults checkXml(std::string_view text, std::size_t limit = SIZE_MAX);

/// Finds end tags that are wrong or missing in `text`, and nothing else: faults of the kinds that
/// begin with EndTag, as checkXml() does. For a text that a parse has found malformed: the parse
/// knows where it stopped, this says which element was open there.
TARN_API XmlFaults checkXmlTags(std::string_view text, std::size_t limit = SIZE_MAX);

}  // namespace util
}  // namespace libtarn
