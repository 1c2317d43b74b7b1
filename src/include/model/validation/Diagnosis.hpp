#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "libtarn/TarnApi.hpp"
#include "libtarn/util/TextPosition.hpp"

namespace libtarn {
namespace model {

class IDistinguishedNameValidator;

namespace validation {

/// A fault of a text, and where it is. A value: nothing in it points into the text.
struct Finding {
  /// Which rule is broken. A caller that reports findings to another program can name the rule.
  enum class Kind : std::uint8_t {
    // Malformed.
    MalformedXml,
    UnknownElement,  ///< Of a tag that the model does not know.

    // Attributes that are missing, or have a value that they may not have.
    RootNamespace,
    RootVersion,
    BodyType,
    LogTime,
    LogAction,
    ObjectClass,
    ObjectName,
    InvalidObjectName,
    ObjectOperation,
    ParameterName,
    ListName,

    // Numbers and kinds of children.
    RootBody,
    BodyHeader,
    PlanWithoutObject,
    MixedList,

    // Names that are taken.
    DuplicateObject,
    DuplicateParameter,
    DuplicateList,
    DuplicateComponent,
  };

  /// ParseResult::Malformed or ParseResult::BrokenRule: what a parse with validation returns that
  /// ends with this fault.
  int code = 0;
  /// The message that Diagnostic has for it.
  std::string message;
  /// The element with the fault, as Validator::getPath() gives it. Of malformed XML the innermost
  /// element that was open, empty outside of every element.
  std::string path;
  /// The distinguished name of the managed object that the element is or lies in; empty without
  /// one.
  std::string distName;
  /// Byte offset of the "<" of the element's start tag in the text as it was handed over (a byte
  /// order mark counts); of malformed XML the place where the parser ended. util::locate() turns it
  /// into line and column. util::NO_OFFSET when the fault is that the text has no root.
  std::size_t offset = util::NO_OFFSET;
  /// Of a duplicate, the offset of the first element of that name; otherwise util::NO_OFFSET.
  std::size_t firstOffset = util::NO_OFFSET;
  /// The broken rule.
  Kind kind = Kind::MalformedXml;
};

/// Everything that is wrong with a text, where a parse with validation reports the first fault.
///
/// A second, slower reading for a host that has seen the first one fail. A text has no findings if
/// and only if LibTarnDocument::parse() with validation returns 0 for it, and the message of the
/// Diagnostic that such a parse leaves is the message of one of the findings.
class TARN_API Diagnosis {
 public:
  /// Stands for "all of them".
  static constexpr std::size_t NO_LIMIT = SIZE_MAX;
  /// Bytes of texts that findings hold, when a host asks for no other limit.
  static constexpr std::size_t DEFAULT_BYTE_LIMIT = std::size_t{16} << 20U;

  Diagnosis() = delete;

  /// The findings of a text that ends with a terminating NUL, in the order in which their elements
  /// begin: all broken rules, values of enumerations that are missing or unknown, elements whose
  /// name is taken, elements that the model does not know. What is below an unknown element has no
  /// findings. Malformed XML ends the reading: it is the last finding, and of the elements that are
  /// open there only that is found which the rest of the text cannot change. A vector without the
  /// terminating NUL is malformed, as for LibTarnDocument::parse().
  ///
  /// Returns the first `limit` findings, and only while the texts of those before hold fewer than
  /// `byteLimit` bytes. `count`, when given, gets the number of all of them. A message holds the
  /// names from the root down, so that without a `byteLimit` a text of n bytes can make n * n.
  ///
  /// `nameValidator` checks distinguished names, null for the library's own. It is used until this
  /// function returns.
  ///
  /// Takes O(n log n) time and O(n) memory for n bytes of text, besides the findings' texts.
  /// Recurses on nothing and logs nothing. May be called by several threads at a time. Throws
  /// std::bad_alloc without memory, and what `nameValidator` throws.
  static std::vector<Finding> of(std::vector<char> text, std::size_t limit = NO_LIMIT,
                                 std::size_t byteLimit = DEFAULT_BYTE_LIMIT,
                                 std::size_t* count = nullptr,
                                 const IDistinguishedNameValidator* nameValidator = nullptr);
  /// The findings of a copy of the NUL-terminated `text`, as above.
  static std::vector<Finding> of(const char* text, std::size_t limit = NO_LIMIT,
                                 std::size_t byteLimit = DEFAULT_BYTE_LIMIT,
                                 std::size_t* count = nullptr,
                                 const IDistinguishedNameValidator* nameValidator = nullptr);
};

}  // namespace validation
}  // namespace model
}  // namespace libtarn
