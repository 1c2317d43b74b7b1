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
/// Lives in its document's pool until the document is destroyed. One thread at a time.
class TARN_API TarnDomElement : public libDomXml::DomElement {
 public:
  /// A detached element to be made in `pool`.
  explicit TarnDomElement(libDomXml::IMemoryPool* pool) : DomElement(pool) {}

  /// Neighbours and children that are elements of the model.
  TarnDomElement* nextSibling(const char* name) const override;
  TarnDomElement* getFirstChild(const char* name) const override;

  using DomElement::clone;
  /// A deep, detached copy in the document of `factory`. Does not recurse on the depth.
  virtual TarnDomElement* clone(util::TarnFactory& factory) const = 0;
  /// Calls accept() on the children that `validator` is to visit.
  virtual void dispatchToChildren(validation::Validator& validator) const = 0;
  /// Calls visit() of `validator` for this element.
  virtual void dispatchToSelf(validation::Validator& validator) const = 0;
  /// Puts this element on the validator's path.
  virtual void updatePath(validation::Validator& validator) const = 0;

  /// Lets `validator` visit this element and what lies below it.
  void accept(validation::Validator& validator) const;

  /// Adds copies of the attributes, or of the children, to `target`, in the target's pool. In
  /// another pool children are built by the factory of the target's document.
  void cloneAttributes(TarnDomElement* target) const;
  void cloneChildren(TarnDomElement* target) const;

 protected:
  /// This element's part of a copy: a new element without children, and whether children are to
  /// follow. The default takes what clone() gives.
  virtual libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const;
  /// Called on a copy once its children are in place.
  virtual void finishCopy();
  /// The deep copy, built from copySelf() and finishCopy() of every element.
  TarnDomElement* cloneTree(util::TarnFactory& factory) const;
  /// Unlinks this element from its parent, if it has one.
  void unlinkFromParent();
};

}  // namespace model
}  // namespace libtarn
