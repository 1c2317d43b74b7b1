// Included by other headers; not for hosts.
#pragma once

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

/// Keeps the children of one class unique by their getId(), by walking the children.
///
/// Owns nothing: each call gets the parent. Instantiated for the extensions of an object and the
/// parameters of an extension.
template <class Parent, class Child, class Id>
class TARN_API UniqueContainer {
 public:
  /// `idAttributeName` is the attribute that messages name as the identifier.
  explicit UniqueContainer(const char* idAttributeName) : idAttributeName_(idAttributeName) {}

  /// Returns true if `parent` has a child of that identifier.
  bool has(const Parent& parent, const Id& id) const { return find(parent, id) != nullptr; }

  /// Returns the first child of that identifier. Throws NoSuchElementException when there is none.
  Child* get(const Parent& parent, const Id& id) const;

  /// Appends `child`. Throws DuplicateElementException, with nothing changed, when its identifier
  /// is taken.
  void add(Parent& parent, Child& child) const;

  /// Unlinks the first child of that identifier. Throws NoSuchElementException when there is none.
  void remove(Parent& parent, const Id& id) const;

  /// Returns the first child of that identifier, or null.
  Child* find(const Parent& parent, const Id& id) const;

 private:
  const char* idAttributeName_;
};

}  // namespace model
}  // namespace libtarn
