#pragma once

#include "libtarn/DomAttribute.hpp"
#include "libtarn/TarnApi.hpp"

namespace libDomXml {

/// Iterates over all attributes of one element, in both directions.
///
/// A value that borrows the attribute. Null is the end: to advance or to dereference the end is an
/// assertion ("attribute").
class TARN_API DomAttributeIterator {
 public:
  /// Starts at `attribute`; null is the end.
  explicit DomAttributeIterator(DomAttribute* attribute) : attribute_(attribute) {}

  /// Returns the current attribute, or null at the end.
  DomAttribute* get() const { return attribute_; }
  /// Returns the current attribute; not at the end (asserted).
  DomAttribute& operator*() const;
  /// Returns the current attribute; not at the end (asserted).
  DomAttribute* operator->() const;

  /// Moves to the next attribute of any name, or to the end.
  DomAttributeIterator& operator++();
  /// Moves to the next attribute of any name, or to the end. Returns the position before.
  DomAttributeIterator operator++(int);
  /// Moves to the previous attribute of any name, or to the end.
  DomAttributeIterator& operator--();
  /// Moves to the previous attribute of any name, or to the end. Returns the position before.
  DomAttributeIterator operator--(int);

  /// Returns true if both are at the same attribute, or both at the end.
  bool operator==(const DomAttributeIterator& other) const {
    return attribute_ == other.attribute_;
  }
  /// Returns true if the two are at different attributes.
  bool operator!=(const DomAttributeIterator& other) const { return !(*this == other); }

 private:
  DomAttribute* attribute_;
};

}  // namespace libDomXml
