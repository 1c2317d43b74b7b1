#pragma once

#include <cstddef>
#include <string>

namespace libtarn {
namespace model {

/// The result of the last parse or validation of a document, of the last merge, or of a change by
/// mask.
struct Diagnostic {
  /// The result code: 0 for success. For a parse or a validation 1 for malformed XML, 2 for a
  /// broken rule of the model (ParseResult). For a merge 1 when it was refused (EditResult). For a
  /// change by mask a ChangeResult.
  int code = 0;
  /// What is wrong, without a prefix; empty on success.
  std::string message;
  /// For malformed XML the byte offset of the fault from the start of the text as it was handed
  /// over (a byte order mark counts); otherwise 0. util::locate() turns it into line and column.
  std::size_t offset = 0;
};

}  // namespace model
}  // namespace libtarn
