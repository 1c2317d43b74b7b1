#pragma once

#include "libtarn/DomAttributeIterator.hpp"
#include "libtarn/TarnApi.hpp"

namespace libDomXml {

class DomAttribute;
class IDomDocument;
class IMemoryPool;

/// An element of a DOM tree.
///
/// Elements belong to their document and are borrowed: a pointer is valid until the document is
/// destroyed. "name" arguments are NUL-terminated; null means any name. Names are compared byte by
/// byte.
class TARN_API IDomElement {
 public:
  virtual ~IDomElement() = default;

  /// Returns a deep, detached copy in the same pool.
  virtual IDomElement* clone() const = 0;
  /// Returns a deep, detached copy in `pool`.
  virtual IDomElement* clone(IMemoryPool* pool) const = 0;

  /// Returns the name; never null for an element.
  virtual const char* getTagName() const = 0;
  /// Copies `name`, which must not be null (asserted).
  virtual void setTagName(const char* name) = 0;
  /// Returns the text; never null for an element, "" without a text.
  virtual const char* getValue() const = 0;
  /// Copies `value`, which must not be null (asserted).
  virtual void setValue(const char* value) = 0;

  /// Returns the value of the first attribute of that name, or null when there is none.
  virtual const char* getAttribute(const char* name) const = 0;
  /// Returns the value of the first attribute of that name, or `defaultValue` when there is none.
  virtual const char* getAttribute(const char* name, const char* defaultValue) const = 0;
  /// Returns an iterator at the first attribute of that name, or at the end.
  virtual DomAttributeIterator getAttributeIter(const char* name) const = 0;
  /// Replaces the value of the first attribute of that name, or appends a new attribute.
  virtual void setAttribute(const char* name, const char* value) = 0;
  /// Appends a detached attribute of the same pool. Does nothing when one of that name exists.
  virtual void addAttribute(DomAttribute* attribute) = 0;
  /// Unlinks the first attribute of that name. Returns false when there is none.
  virtual bool removeAttribute(const char* name) = 0;
  /// Returns an iterator at the first attribute of that name, or at the end.
  virtual DomAttributeIterator getFirstAttribute(const char* name) const = 0;
  /// Returns an iterator at the last attribute of that name, or at the end.
  virtual DomAttributeIterator getLastAttribute(const char* name) const = 0;

  /// Returns the next sibling of that name, or null.
  virtual IDomElement* nextSibling(const char* name) const = 0;
  /// Returns the previous sibling of that name, or null.
  virtual IDomElement* previousSibling(const char* name) const = 0;
  /// Returns the first child of that name, or null.
  virtual IDomElement* getFirstChild(const char* name) const = 0;
  /// Returns the last child of that name, or null.
  virtual IDomElement* getLastChild(const char* name) const = 0;

  /// Links `child` before the child `where`; null: as the last child. `child` must be detached, of
  /// the same pool, and not an ancestor of this element (asserted).
  virtual void insertChild(IDomElement* child, IDomElement* where) = 0;
  /// Links `child` as the last child. It must be detached, of the same pool, and not an ancestor of
  /// this element (asserted).
  virtual void addChild(IDomElement* child) = 0;
  /// Unlinks `child`. Returns false when it is no child of this element.
  virtual bool removeChild(IDomElement* child) = 0;

  /// Returns true if the element has children.
  virtual bool hasChildren() const = 0;
  /// Returns true if the element has attributes.
  virtual bool hasAttributes() const = 0;
  /// Returns the owning element, or the document for a top-level element; null when detached.
  virtual IDomElement* getParent() const = 0;
  /// Returns the document that the element is linked to, or null.
  virtual IDomDocument* getDocument() const = 0;
};

}  // namespace libDomXml
