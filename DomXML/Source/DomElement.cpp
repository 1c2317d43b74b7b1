#include "libtarn/DomElement.hpp"

#include <cstring>
#include <set>
#include <string_view>
#include <typeinfo>

#include "copyTree.hpp"
#include "libtarn/DomDocument.hpp"
#include "virtualFunctions.hpp"

namespace libDomXml {

namespace {

// Every node below a document is a DomElement.
DomElement* toElement(rapidxml::xml_node<char>* node) { return static_cast<DomElement*>(node); }

DomAttribute* toAttribute(rapidxml::xml_attribute<char>* attribute) {
  return static_cast<DomAttribute*>(attribute);
}

const DomAttribute* toAttribute(const rapidxml::xml_attribute<char>* attribute) {
  return static_cast<const DomAttribute*>(attribute);
}

DomElement* copyWithoutChildren(const DomElement& source, IMemoryPool* pool,
                                rapidxml::node_type type) {
  DomFactory factory(pool);
  DomElement* const copy = factory.allocateNode(type, nullptr, nullptr, 0, 0);
  factory.copyTexts(source, *copy);
  return copy;
}

// Returns true if the class of `element` overrides the function.
bool overrides(const DomElement& element, VirtualFunction function) {
  if (typeid(element) == typeid(DomElement)) return false;
  const DomElement base(nullptr);
  return !runSameCode(element, base, function);
}

}  // namespace

// A class with a clone() of its own makes its copies itself, and may recurse.

IDomElement* DomElement::clone() const {
  const auto copyOne = [this](const DomElement& source) {
    if (&source != this && overrides(source, VirtualFunction::CLONE)) {
      return ElementCopy{dynamic_cast<DomElement*>(source.clone()), false};
    }
    DomElement* const copy =
        copyWithoutChildren(source, source.domFactory_.getMemoryPool(), source.type());
    source.copyAttributesTo(*copy);
    return ElementCopy{copy, true};
  };
  return copyTree(*this, copyOne, [](DomElement&) {});
}

IDomElement* DomElement::clone(IMemoryPool* pool) const {
  const auto copyOne = [this, pool](const DomElement& source) {
    if (&source != this && overrides(source, VirtualFunction::CLONE_INTO_POOL)) {
      return ElementCopy{dynamic_cast<DomElement*>(source.clone(pool)), false};
    }
    DomElement* const copy = copyWithoutChildren(source, pool, rapidxml::node_element);
    source.copyAttributesTo(*copy);
    return ElementCopy{copy, true};
  };
  return copyTree(*this, copyOne, [](DomElement&) {});
}

// Like addAttribute() for a copy of each, but does not compare each of many names with all others.
void DomElement::copyAttributesTo(DomElement& target) const {
  constexpr int FEW = 32;
  IMemoryPool* const pool = target.domFactory_.getMemoryPool();
  const auto* attribute = first_attribute();
  for (int count = 0; attribute && count < FEW; ++count) {
    target.addAttribute(toAttribute(attribute)->clone(pool));
    attribute = attribute->next_attribute();
  }
  if (!attribute) return;
  std::set<std::string_view> names;
  const auto nameOf = [](const rapidxml::xml_attribute<char>& each) {
    return std::string_view(each.name(), each.name_size());
  };
  for (const auto* each = target.first_attribute(); each; each = each->next_attribute()) {
    names.insert(nameOf(*each));
  }
  for (; attribute; attribute = attribute->next_attribute()) {
    DomAttribute* const copy = toAttribute(attribute)->clone(pool);
    if (names.insert(nameOf(*copy)).second) target.append_attribute(copy);
  }
}

const char* DomElement::getTagName() const { return xml_base::name(); }

void DomElement::setTagName(const char* name) {
  xml_base::name(domFactory_.allocateString(name, 0));
}

const char* DomElement::getValue() const { return xml_base::value(); }

void DomElement::setValue(const char* value) {
  xml_base::value(domFactory_.allocateString(value, 0));
}

const char* DomElement::getAttribute(const char* name) const { return getAttribute(name, nullptr); }

const char* DomElement::getAttribute(const char* name, const char* defaultValue) const {
  const auto* const attribute = first_attribute(name);
  return attribute ? attribute->value() : defaultValue;
}

DomAttributeIterator DomElement::getAttributeIter(const char* name) const {
  return DomAttributeIterator(toAttribute(first_attribute(name)));
}

void DomElement::setAttribute(const char* name, const char* value) {
  if (auto* const attribute = first_attribute(name)) {
    toAttribute(attribute)->setValue(value);
  } else {
    append_attribute(domFactory_.allocateAttribute(name, value, 0, 0));
  }
}

void DomElement::addAttribute(DomAttribute* newDomAttribute) {
  TARN_ASSERT(newDomAttribute, "attribute && !attribute->parent()");
  TARN_ASSERT(domFactory_.getMemoryPool() == newDomAttribute->getDomFactory()->getMemoryPool(),
              "domFactory_.getMemoryPool() == newDomAttribute->getDomFactory()->getMemoryPool()");
  if (first_attribute(newDomAttribute->name(), newDomAttribute->name_size())) return;
  append_attribute(newDomAttribute);
}

bool DomElement::removeAttribute(const char* name) {
  auto* const attribute = first_attribute(name);
  if (!attribute) return false;
  remove_attribute(attribute);
  return true;
}

DomAttributeIterator DomElement::getFirstAttribute(const char* name) const {
  return getAttributeIter(name);
}

DomAttributeIterator DomElement::getLastAttribute(const char* name) const {
  return DomAttributeIterator(toAttribute(last_attribute(name)));
}

IDomElement* DomElement::nextSibling(const char* name) const {
  return toElement(next_sibling(name));
}

IDomElement* DomElement::previousSibling(const char* name) const {
  return toElement(previous_sibling(name));
}

IDomElement* DomElement::getFirstChild(const char* name) const {
  return toElement(first_node(name));
}

IDomElement* DomElement::getLastChild(const char* name) const {
  return first_node() ? toElement(last_node(name)) : nullptr;
}

// A document, or an object of another implementation, is not an element of this tree.
DomElement* DomElement::linkable(IDomElement* child) const {
  auto* const newDomElement = dynamic_cast<DomElement*>(child);
  TARN_ASSERT(newDomElement, "child && !child->parent() && child->type() != node_document");
  TARN_ASSERT(domFactory_.getMemoryPool() == newDomElement->getDomFactory()->getMemoryPool(),
              "domFactory_.getMemoryPool() == newDomElement->getDomFactory()->getMemoryPool()");
  // An element that is linked already is refused where it would be linked again.
  TARN_ASSERT(newDomElement->parent() || !isAtOrBelow(*newDomElement), "child is no ancestor");
  return newDomElement;
}

// Usually decided without a walk: the new element has no children yet, or this one is near the top.
bool DomElement::isAtOrBelow(const DomElement& top) const {
  if (!top.first_node()) return this == &top;
  const rapidxml::xml_node<char>* node = this;
  while (node && node != &top) node = node->parent();
  return node != nullptr;
}

void DomElement::insertChild(IDomElement* child, IDomElement* where) {
  DomElement* const position = dynamic_cast<DomElement*>(where);
  TARN_ASSERT(!where || position, "!where || where->parent() == this");
  insert_node(position, linkable(child));
}

void DomElement::addChild(IDomElement* child) { append_node(linkable(child)); }

bool DomElement::removeChild(IDomElement* child) {
  auto* const element = dynamic_cast<DomElement*>(child);
  if (!element || element->parent() != this || !first_node()) return false;
  unlink(element);
  return true;
}

bool DomElement::hasChildren() const { return first_node() != nullptr; }

bool DomElement::hasAttributes() const { return first_attribute() != nullptr; }

IDomElement* DomElement::getParent() const {
  rapidxml::xml_node<char>* const owner = parent();
  if (!owner) return nullptr;
  if (owner->type() != rapidxml::node_document) return toElement(owner);
  return static_cast<DomDocument*>(static_cast<rapidxml::xml_document<char>*>(owner));
}

IDomDocument* DomElement::getDocument() const {
  rapidxml::xml_node<char>* top = parent();
  if (!top) return nullptr;
  while (top->parent()) top = top->parent();
  if (top->type() != rapidxml::node_document) return nullptr;
  return static_cast<DomDocument*>(static_cast<rapidxml::xml_document<char>*>(top));
}

void DomElement::moveTextsIntoPool() {
  const auto copy = [this](const char* text, std::size_t size) {
    char* const result = domFactory_.allocateString(nullptr, size + 1);
    std::memcpy(result, text, size);
    result[size] = '\0';
    return result;
  };
  const auto move = [copy](rapidxml::xml_base<char>& record) {
    record.name(copy(record.name(), record.name_size()), record.name_size());
    record.value(copy(record.value(), record.value_size()), record.value_size());
  };
  move(*this);
  for (auto* attribute = first_attribute(); attribute; attribute = attribute->next_attribute()) {
    move(*attribute);
  }
}

}  // namespace libDomXml
