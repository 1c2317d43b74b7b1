#pragma once

#include "libtarn/DomElement.hpp"
#include "libtarn/ElementCopy.hpp"

namespace libDomXml {

/// Copies `top` and everything below it without recursion: walks source and copy in step, along
/// their links. Returns the copy of `top`, detached.
///
/// `copyOne(const DomElement&)` returns the ElementCopy of one element, detached.
/// `finish(DomElement& copy)` is called for each copy whose children have been copied, children
/// first.
template <class CopyOne, class Finish>
DomElement* copyTree(const DomElement& top, CopyOne copyOne, Finish finish) {
  ElementCopy copy = copyOne(top);
  DomElement* const result = copy.element;
  const rapidxml::xml_node<char>* from = &top;
  rapidxml::xml_node<char>* to = result;
  for (;;) {
    const rapidxml::xml_node<char>* next = copy.lacksChildren ? from->first_node() : nullptr;
    rapidxml::xml_node<char>* target = to;
    if (!next) {
      if (copy.lacksChildren) finish(static_cast<DomElement&>(*to));
      while (from != &top && !from->next_sibling()) {
        from = from->parent();
        to = to->parent();
        finish(static_cast<DomElement&>(*to));
      }
      if (from == &top) return result;
      next = from->next_sibling();
      target = to->parent();
    }
    from = next;
    copy = copyOne(static_cast<const DomElement&>(*from));
    to = copy.element;
    target->append_node(to);
  }
}

}  // namespace libDomXml
