#pragma once

#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/IElement.hpp"

namespace libtarn {
namespace model {

class Scalar;
class Structure;

/// A list parameter: plain values (`p`) or structures (`item`), never both.
///
/// Lifetime and threads as for every IElement.
class TARN_API List : public IElement {
 public:
  /// The tag.
  static constexpr const char* TAG_NAME = "list";

  List* getNextSiblingElement() const override = 0;

  /// Returns the attribute "name", null when absent.
  virtual const char* getName() const = 0;
  /// Returns the name, "" when there is none.
  virtual std::string getId() const = 0;

  /// Returns true if there is a `p`.
  virtual bool hasScalarValues() const = 0;
  /// Returns the first plain value, or null. getNextSiblingElement() returns the others.
  virtual Scalar* getScalarValues() const = 0;
  /// Appends `value`, which must be detached and of this document (asserted). Returns 0, or 1 with
  /// nothing changed when the list holds structures. Walks the list.
  virtual std::uint8_t addValue(Scalar& value) = 0;

  /// Returns true if there is an `item`.
  virtual bool hasStructuredValues() const = 0;
  /// Returns the first structure, or null. getNextSiblingElement() returns the others.
  virtual Structure* getStructuredValues() const = 0;
  /// Appends `value`, which must be detached and of this document (asserted). Returns 0, or 1 with
  /// nothing changed when the list holds plain values. Walks the list.
  virtual std::uint8_t addValue(Structure& value) = 0;

  /// Returns true if the name matches ("#" is a wildcard) and every value of `pattern` is matched
  /// by a value of this list. Order and count do not matter. Cost: product of the two lengths.
  virtual bool match(const List& pattern) const = 0;
};

}  // namespace model
}  // namespace libtarn
