#pragma once

#include "libtarn/DomAttribute.hpp"
#include "libtarn/TarnApi.hpp"

namespace libDomXml {

/// Walks all attributes of one element, in both directions.
///
/// A value that borrows the attribute. Null is the end; a step from the end, or a look at it, is an
/// assertion ("attribute").
class TARN_API DomAttributeIterator {
 public:
  /// At `attribute`; null is the end.
  explicit DomAttributeIterator(DomAttribute* attribute) : attribute_(attribute) {}

  /// The current attribute, null at the end.
  DomAttribute* get() const { return attribute_; }
  DomAttribute& operator*() const;
  DomAttribute* operator->() const;

  /// To the next or previous attribute of any name, or the end.
  DomAttributeIterator& operator++();
  DomAttributeIterator operator++(int);
  DomAttributeIterator& operator--();
  DomAttributeIterator operator--(int);

  /// Whether both are at the same attribute, or at the end.
  bool operator==(const DomAttributeIterator& other) const {
    return attribute_ == other.attribute_;
  }
  bool operator!=(const DomAttributeIterator& other) const { return !(*this == other); }

 private:
  DomAttribute* attribute_;
};

}  // namespace libDomXml
