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

  /// The attribute "name", null when absent.
  virtual const char* getName() const = 0;
  /// The name, "" when there is none.
  virtual std::string getId() const = 0;

  /// Whether there is any `p`.
  virtual bool hasScalarValues() const = 0;
  /// First plain value, or null. The others follow by getNextSiblingElement().
  virtual Scalar* getScalarValues() const = 0;
  /// Appends `value`, which must be detached and of this document (asserted). Returns 0, or 1 with
  /// nothing changed when the list holds structures. Walks the list.
  virtual std::uint8_t addValue(Scalar& value) = 0;

  /// Whether there is any `item`.
  virtual bool hasStructuredValues() const = 0;
  /// First structure, or null. The others follow by getNextSiblingElement().
  virtual Structure* getStructuredValues() const = 0;
  /// Appends `value`, which must be detached and of this document (asserted). Returns 0, or 1 with
  /// nothing changed when the list holds plain values. Walks the list.
  virtual std::uint8_t addValue(Structure& value) = 0;

  /// True when the name fits ("#" is a wildcard) and every value of `pattern` is matched by some
  /// value of this list. Order and count do not matter. Cost: product of the two lengths.
  virtual bool match(const List& pattern) const = 0;
};

}  // namespace model
}  // namespace libtarn
