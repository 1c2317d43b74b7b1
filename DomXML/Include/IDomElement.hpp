#pragma once

#include "libtarn/DomAttributeIterator.hpp"
#include "libtarn/TarnApi.hpp"

namespace libDomXml {

class DomAttribute;
class IDomDocument;
class IMemoryPool;

/// An element of a DOM tree.
///
/// Elements belong to their document and are borrowed: a pointer is good until the document is
/// destroyed. "name" arguments are zero-terminated; null means any name. Names are compared byte by
/// byte.
class TARN_API IDomElement {
 public:
  virtual ~IDomElement() = default;

  /// A deep, detached copy in the same pool, or in `pool`.
  virtual IDomElement* clone() const = 0;
  virtual IDomElement* clone(IMemoryPool* pool) const = 0;

  /// Never null for an element.
  virtual const char* getTagName() const = 0;
  /// Copies `name`, which must not be null (asserted).
  virtual void setTagName(const char* name) = 0;
  /// Never null for an element, "" without a text.
  virtual const char* getValue() const = 0;
  /// Copies `value`, which must not be null (asserted).
  virtual void setValue(const char* value) = 0;

  /// Value of the first attribute of that name; null, or `defaultValue`, when there is none.
  virtual const char* getAttribute(const char* name) const = 0;
  virtual const char* getAttribute(const char* name, const char* defaultValue) const = 0;
  /// The first attribute of that name, or the end.
  virtual DomAttributeIterator getAttributeIter(const char* name) const = 0;
  /// Replaces the value of the first attribute of that name, or appends a new attribute.
  virtual void setAttribute(const char* name, const char* value) = 0;
  /// Appends a detached attribute of the same pool. Does nothing when one of that name exists.
  virtual void addAttribute(DomAttribute* attribute) = 0;
  /// True when an attribute of that name was there and has been unlinked.
  virtual bool removeAttribute(const char* name) = 0;
  /// The first and the last attribute of that name, or the end.
  virtual DomAttributeIterator getFirstAttribute(const char* name) const = 0;
  virtual DomAttributeIterator getLastAttribute(const char* name) const = 0;

  /// Neighbours and children of that name, or null.
  virtual IDomElement* nextSibling(const char* name) const = 0;
  virtual IDomElement* previousSibling(const char* name) const = 0;
  virtual IDomElement* getFirstChild(const char* name) const = 0;
  virtual IDomElement* getLastChild(const char* name) const = 0;

  /// Links a detached element of the same pool, in which this one is not (asserted), before `where`
  /// (null: as the last child).
  virtual void insertChild(IDomElement* child, IDomElement* where) = 0;
  /// Links a detached element of the same pool, in which this one is not (asserted), as the last
  /// child.
  virtual void addChild(IDomElement* child) = 0;
  /// True when `child` was a child and has been unlinked.
  virtual bool removeChild(IDomElement* child) = 0;

  /// Whether there are any.
  virtual bool hasChildren() const = 0;
  virtual bool hasAttributes() const = 0;
  /// The owning element, or the document for a top-level element; null when detached.
  virtual IDomElement* getParent() const = 0;
  /// The document to which the element is linked, or null.
  virtual IDomDocument* getDocument() const = 0;
};

}  // namespace libDomXml
