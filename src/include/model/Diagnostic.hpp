#pragma once

#include <cstddef>
#include <string>

namespace libtarn {
namespace model {

/// What became of the last parse or validation of a document, of a merge, or of a change by mask.
struct Diagnostic {
  /// The result: 0; for a parse or a validation 1 for malformed XML, or 2 for a broken rule of the
  /// model (ParseResult); for a merge 1 when it was refused (EditResult); for a change by mask a
  /// ChangeResult.
  int code = 0;
  /// What is wrong, without a prefix; empty on success.
  std::string message;
  /// For code 1 the place of the parser, in bytes from the start of the text as it was handed over
  /// (a byte order mark counts); otherwise 0. util::locate() turns it into line and column.
  std::size_t offset = 0;
};

}  // namespace model
}  // namespace libtarn
