#pragma once

#include "libtarn/DomElement.hpp"
#include "libtarn/ElementCopy.hpp"
#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace util {
class TarnFactory;
}

namespace model {

namespace validation {
class Validator;
}

/// Base of every element of the model: a DOM element that a validator can visit and that copies
/// itself through a factory.
///
/// Lives in its document's pool until the document is destroyed. Used by one thread at a time.
class TARN_API TarnDomElement : public libDomXml::DomElement {
 public:
  /// A detached element, for placement in `pool`.
  explicit TarnDomElement(libDomXml::IMemoryPool* pool) : DomElement(pool) {}

  /// Returns the next sibling of that name that is an element of the model, or null.
  TarnDomElement* nextSibling(const char* name) const override;
  /// Returns the first child of that name that is an element of the model, or null.
  TarnDomElement* getFirstChild(const char* name) const override;

  using DomElement::clone;
  /// Returns a deep, detached copy in the document of `factory`. Does not recurse on the depth.
  virtual TarnDomElement* clone(util::TarnFactory& factory) const = 0;
  /// Calls accept() on the children that `validator` is to visit.
  virtual void dispatchToChildren(validation::Validator& validator) const = 0;
  /// Calls visit() of `validator` for this element.
  virtual void dispatchToSelf(validation::Validator& validator) const = 0;
  /// Puts this element on the validator's path.
  virtual void updatePath(validation::Validator& validator) const = 0;

  /// Lets `validator` visit this element and everything below it.
  void accept(validation::Validator& validator) const;

  /// Adds copies of the attributes to `target`, in the target's pool.
  void cloneAttributes(TarnDomElement* target) const;
  /// Adds copies of the children to `target`, in the target's pool. In another pool, the factory of
  /// the target's document builds them.
  void cloneChildren(TarnDomElement* target) const;

 protected:
  /// Returns this element's part of a copy: a new element without children, and whether children
  /// are to follow. The default returns what clone() returns.
  virtual libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const;
  /// Called on a copy once its children are linked.
  virtual void finishCopy();
  /// Returns a deep copy, built by copySelf() and finishCopy() of every element.
  TarnDomElement* cloneTree(util::TarnFactory& factory) const;
  /// Unlinks this element from its parent, if it has one.
  void unlinkFromParent();
};

}  // namespace model
}  // namespace libtarn
