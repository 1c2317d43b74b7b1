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

/// What became of a change by mask: Diagnostic::code of LibTarnManagedObject::tryChange() and
/// LibTarnDocument::tryChangesToMOs().
struct ChangeResult {
  /// All was changed as asked.
  static constexpr int Done = 0;
  /// Nothing has changed: the object does not match the mask.
  static constexpr int NoMatch = 1;
  /// Nothing has changed: a copy of what the object was to get breaks a rule of the model.
  static constexpr int BrokenRule = 2;
  /// The object has kept its name, since the document's name validator rejects the new one. All
  /// else was changed.
  static constexpr int InvalidName = 3;
  /// All was changed, but another object has the new name: the index does not find the object.
  /// LibTarnManagedObject::setDistName() says how that ends.
  static constexpr int NameTaken = 4;
  /// Nothing has changed: the document has no cmData.
  static constexpr int NoCmData = 5;
};

}  // namespace model
}  // namespace libtarn
