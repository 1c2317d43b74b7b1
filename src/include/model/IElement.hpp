#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

/// What every element of the model offers to a host.
///
/// An element is the XML node itself and belongs to its document: pointers are borrowed and good
/// until the document is destroyed, also after the element has been removed; nobody deletes one.
/// Used by one thread at a time, together with its document.
class TARN_API IElement {
 public:
  /// The next sibling with the same tag, or null; null also for an element that is not linked.
  virtual IElement* getNextSiblingElement() const = 0;

  /// The first child with that tag (null: any tag), or null.
  virtual IElement* getFirstChildElement(const char* name) const = 0;

  /// Unlinks the element from its parent, if it has one. An index that the parent keeps is not
  /// told: use the parent's remove operation where it has one.
  virtual void removeThisElement() = 0;

  virtual ~IElement() = default;
};

}  // namespace model
}  // namespace libtarn
