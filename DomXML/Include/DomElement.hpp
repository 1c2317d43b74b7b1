#pragma once

#include <cstddef>
#include <cstring>

#include "libtarn/DomFactory.hpp"
#include "libtarn/IDomElement.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/rapidxml/nodes.hpp"

namespace libDomXml {

/// An element of a DOM tree, which is at the same time the node record of the XML core.
///
/// Lives in its document's pool until the document is destroyed, also after it has been removed
/// from the tree. It is an assertion to link an element of another pool, one that is linked
/// already, or an element below itself.
class TARN_API DomElement : public IDomElement, public rapidxml::xml_node<char> {
 public:
  /// A detached element without name and text, for placement in `pool`.
  explicit DomElement(IMemoryPool* pool)
      : rapidxml::xml_node<char>(rapidxml::node_element), domFactory_(pool) {}

  /// Does nothing: the pool frees its objects together.
  static void operator delete(void* /*memory*/) {}
  /// Placement new: constructs the element at `address`.
  static void* operator new(std::size_t /*size*/, void* address) { return address; }

  /// Returns a deep, detached copy in the same pool, which keeps the node kind. A child whose class
  /// overrides this function is asked for its copy; every other one is copied as a DomElement. Does
  /// not recurse on the depth of the tree, except in such overrides.
  IDomElement* clone() const override;
  /// Like clone(), in `pool`. The copy is an element, whatever the node kind.
  IDomElement* clone(IMemoryPool* pool) const override;

  const char* getTagName() const override;
  void setTagName(const char* name) override;
  const char* getValue() const override;
  void setValue(const char* value) override;
  const char* getAttribute(const char* name) const override;
  const char* getAttribute(const char* name, const char* defaultValue) const override;
  /// Like getAttribute(), for a literal, whose length is known.
  template <std::size_t Size>
  const char* getLiteralAttribute(const char (&name)[Size]) const {
    const auto* attribute = first_attribute();
    while (attribute && (attribute->name_size() != Size - 1 ||
                         std::memcmp(attribute->name(), name, Size - 1) != 0)) {
      attribute = attribute->next_attribute();
    }
    return attribute ? attribute->value() : nullptr;
  }
  DomAttributeIterator getAttributeIter(const char* name) const override;
  void setAttribute(const char* name, const char* value) override;
  void addAttribute(DomAttribute* newDomAttribute) override;
  bool removeAttribute(const char* name) override;
  DomAttributeIterator getFirstAttribute(const char* name) const override;
  DomAttributeIterator getLastAttribute(const char* name) const override;
  IDomElement* nextSibling(const char* name) const override;
  IDomElement* previousSibling(const char* name) const override;
  IDomElement* getFirstChild(const char* name) const override;
  IDomElement* getLastChild(const char* name) const override;
  void insertChild(IDomElement* child, IDomElement* where) override;
  void addChild(IDomElement* child) override;
  bool removeChild(IDomElement* child) override;
  bool hasChildren() const override;
  bool hasAttributes() const override;
  IDomElement* getParent() const override;
  IDomDocument* getDocument() const override;

  /// Returns a factory for texts and nodes in the pool of this element.
  const DomFactory* getDomFactory() const { return &domFactory_; }

  /// Copies name, value and the texts of the attributes into the pool, so that the element outlives
  /// the text that it was parsed from.
  void moveTextsIntoPool();

 protected:
  /// Adds copies of the attributes to `target`, in the target's pool.
  void copyAttributesTo(DomElement& target) const;

  /// Factory over the pool of this element.
  DomFactory domFactory_;

 private:
  DomElement* linkable(IDomElement* child) const;
  bool isAtOrBelow(const DomElement& top) const;
};

}  // namespace libDomXml
