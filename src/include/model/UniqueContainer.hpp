#pragma once

#include "TarnApi.hpp"
#include "model/TypedChildren.hpp"
#include "model/exceptions/DuplicateElementException.hpp"
#include "model/exceptions/NoSuchElementException.hpp"

namespace libtarn {
namespace model {

/// Keeps the children of one class unique by what their getId() says, by searching them.
///
/// Owns nothing: it works on the parent passed to each call. Every operation walks the children.
/// Instantiated for identifiers of type std::string.
template <class Parent, class Child, class Id>
class TARN_API UniqueContainer {
 public:
  /// The attribute that messages name as the identifier.
  explicit UniqueContainer(const char* idAttributeName) : idAttributeName_(idAttributeName) {}

  bool has(const Parent& parent, const Id& id) const { return find(parent, id) != nullptr; }

  /// Throws NoSuchElementException when there is no such child.
  Child* get(const Parent& parent, const Id& id) const {
    Child* const child = find(parent, id);
    if (!child) {
      throw exceptions::NoSuchElementException::instance(Child::TAG_NAME, idAttributeName_, id);
    }
    return child;
  }

  /// Appends `child`. Throws DuplicateElementException, with nothing changed, when its identifier
  /// is taken.
  void add(Parent& parent, Child& child) const {
    const Id id = child.getId();
    if (has(parent, id)) {
      throw exceptions::DuplicateElementException::instance(Child::TAG_NAME, Parent::TAG_NAME,
                                                            idAttributeName_, id);
    }
    parent.addChild(&child);
  }

  /// Throws NoSuchElementException when there is no such child.
  void remove(Parent& parent, const Id& id) const { parent.removeChild(get(parent, id)); }

 private:
  Child* find(const Parent& parent, const Id& id) const {
    Child* child = firstTypedChild<Child>(parent);
    while (child && id != child->getId()) child = nextTypedSibling(*child);
    return child;
  }

  const char* idAttributeName_;
};

}  // namespace model
}  // namespace libtarn
