#pragma once

#include <cstdint>

namespace libtarn {
namespace model {

/// What LibTarnDocument::parse() and validate() return, and the code of their Diagnostic.
struct ParseResult {
  /// The text was parsed; where validation was asked for, all rules are kept.
  static constexpr int Done = 0;
  /// Malformed XML, or an element that the model does not have.
  static constexpr int Malformed = 1;
  /// A rule of the model is broken.
  static constexpr int BrokenRule = 2;
};

/// What operations that add, remove and rename elements return.
struct EditResult {
  /// The edit was made.
  static constexpr std::uint8_t Done = 0;
  /// Nothing has changed: a duplicate, a name that is not valid, or an element that was indexed but
  /// not a child.
  static constexpr std::uint8_t Refused = 1;
  /// Nothing has changed: there is no such element.
  static constexpr std::uint8_t NoSuchElement = 2;
};

}  // namespace model
}  // namespace libtarn
