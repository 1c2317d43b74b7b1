// Included by other headers; not for hosts.
#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

/// Keeps the children of one class unique by what their getId() says, by searching them.
///
/// Owns nothing: it works on the parent passed to each call. Every operation walks the children.
/// Instantiated for the extensions of an object and the parameters of an extension.
template <class Parent, class Child, class Id>
class TARN_API UniqueContainer {
 public:
  /// The attribute that messages name as the identifier.
  explicit UniqueContainer(const char* idAttributeName) : idAttributeName_(idAttributeName) {}

  bool has(const Parent& parent, const Id& id) const { return find(parent, id) != nullptr; }

  /// Throws NoSuchElementException when there is no such child.
  Child* get(const Parent& parent, const Id& id) const;

  /// Appends `child`. Throws DuplicateElementException, with nothing changed, when its identifier
  /// is taken.
  void add(Parent& parent, Child& child) const;

  /// Throws NoSuchElementException when there is no such child.
  void remove(Parent& parent, const Id& id) const;

  /// The first child of that identifier, or null.
  Child* find(const Parent& parent, const Id& id) const;

 private:
  const char* idAttributeName_;
};

}  // namespace model
}  // namespace libtarn
