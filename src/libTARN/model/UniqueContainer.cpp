#include "libtarn/model/UniqueContainer.hpp"

#include <string>

#include "TypedChildren.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/exceptions/DuplicateElementException.hpp"
#include "libtarn/model/exceptions/NoSuchElementException.hpp"

namespace libtarn {
namespace model {

template <class Parent, class Child, class Id>
Child* UniqueContainer<Parent, Child, Id>::get(const Parent& parent, const Id& id) const {
  Child* const child = find(parent, id);
  if (!child) {
    throw exceptions::NoSuchElementException::instance(Child::TAG_NAME, idAttributeName_, id);
  }
  return child;
}

template <class Parent, class Child, class Id>
void UniqueContainer<Parent, Child, Id>::add(Parent& parent, Child& child) const {
  const Id id = child.getId();
  if (has(parent, id)) {
    throw exceptions::DuplicateElementException::instance(Child::TAG_NAME, Parent::TAG_NAME,
                                                          idAttributeName_, id);
  }
  parent.addChild(&child);
}

template <class Parent, class Child, class Id>
void UniqueContainer<Parent, Child, Id>::remove(Parent& parent, const Id& id) const {
  parent.removeChild(get(parent, id));
}

template <class Parent, class Child, class Id>
Child* UniqueContainer<Parent, Child, Id>::find(const Parent& parent, const Id& id) const {
  Child* child = firstTypedChild<Child>(parent);
  while (child && id != child->getId()) child = nextTypedSibling(*child);
  return child;
}

template class UniqueContainer<LibTarnManagedObjectImp, LibTarnExtensionImp, std::string>;
template class UniqueContainer<LibTarnExtensionImp, ScalarImp, std::string>;

}  // namespace model
}  // namespace libtarn
