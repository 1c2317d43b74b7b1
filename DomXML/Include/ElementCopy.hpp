// Included by other headers; not for hosts.
#pragma once

namespace libDomXml {

class DomElement;

/// The copy of one element, and whether its children are still to be copied.
struct ElementCopy {
  /// The copy, detached.
  DomElement* element;
  /// False if the copy has its children already, or is to have none.
  bool lacksChildren;
};

}  // namespace libDomXml
