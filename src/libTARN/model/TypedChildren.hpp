#pragma once

#include <cstring>
#include <string_view>
#include <type_traits>
#include <typeinfo>

#include "libtarn/Assertion.hpp"
#include "libtarn/DomElement.hpp"

namespace libtarn {
namespace model {

/// Returns `object` as an `Imp`, or null when it is of another class. Cheap for objects of exactly
/// that class.
template <class Imp, class Base>
auto elementCast(Base* object) -> std::conditional_t<std::is_const_v<Base>, const Imp*, Imp*> {
  using Result = std::conditional_t<std::is_const_v<Base>, const Imp*, Imp*>;
  if (!object) return nullptr;
  Base& element = *object;
  if (typeid(element) == typeid(Imp)) return static_cast<Result>(object);
  return dynamic_cast<Result>(object);
}

/// Returns the node class behind an element interface. The element must be of this library
/// (asserted).
template <class Imp, class Interface>
auto& implementation(Interface& element) {
  auto* const imp = elementCast<Imp>(&element);
  TARN_ASSERT(imp, "element of this library");
  return *imp;
}

/// Returns the first of `node` and the siblings after it that has the tag and the class of `Imp`,
/// or null. `node` has the tag, or is null.
template <class Imp>
Imp* skipToTyped(rapidxml::xml_node<char>* node) {
  while (node) {
    if (Imp* const typed = elementCast<Imp>(static_cast<libDomXml::DomElement*>(node))) {
      return typed;
    }
    node = node->next_sibling(Imp::TAG_NAME);
  }
  return nullptr;
}

/// Returns `node` as an `Imp`, or null when it has another tag or class.
template <class Imp>
Imp* typedAs(rapidxml::xml_node<char>* node) {
  constexpr std::string_view TAG = Imp::TAG_NAME;
  if (node->name_size() != TAG.size() || std::memcmp(node->name(), TAG.data(), TAG.size()) != 0) {
    return nullptr;
  }
  return elementCast<Imp>(static_cast<libDomXml::DomElement*>(node));
}

/// Returns the first child with the tag and the class of `Imp`, or null. The tag alone is not
/// enough: a host can give an element any tag.
template <class Imp>
Imp* firstTypedChild(const rapidxml::xml_node<char>& parent) {
  return skipToTyped<Imp>(parent.first_node(Imp::TAG_NAME));
}

/// Returns the next sibling with the tag and the class of `Imp`, or null; null also for an element
/// that is not linked.
template <class Imp>
Imp* nextTypedSibling(const Imp& element) {
  const rapidxml::xml_node<char>& node = element;
  return node.parent() ? skipToTyped<Imp>(node.next_sibling(Imp::TAG_NAME)) : nullptr;
}

}  // namespace model
}  // namespace libtarn
