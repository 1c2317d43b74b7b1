#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

/// What every element of the model offers to a host.
///
/// An element is the XML node itself and belongs to its document. Pointers are borrowed and valid
/// until the document is destroyed, also after the element has been removed; nobody deletes one.
/// Used by one thread at a time, together with its document.
class TARN_API IElement {
 public:
  /// Returns the next sibling with the same tag, or null; null also for an element that is not
  /// linked.
  virtual IElement* getNextSiblingElement() const = 0;

  /// Returns the first child with that tag (null: any tag), or null.
  virtual IElement* getFirstChildElement(const char* name) const = 0;

  /// Unlinks the element from its parent, if it has one. Does not change an index of the parent:
  /// use the parent's remove operation where it has one.
  virtual void removeThisElement() = 0;

  virtual ~IElement() = default;
};

}  // namespace model
}  // namespace libtarn
