#pragma once

namespace libtarn {

namespace model {
class LibTarnExtensionImp;
class LibTarnManagedObjectImp;
class ListImp;
class ScalarImp;
}  // namespace model

namespace editor {

// Return true if a copy of the element is certain to be made without an exception and to hold
// exactly what the element holds. Copies drop what the format does not have, and are indexed.

bool isCopiedAsIs(const model::ScalarImp& scalar);
bool isCopiedAsIs(const model::ListImp& list);
bool isCopiedAsIs(const model::LibTarnExtensionImp& extension);
bool isCopiedAsIs(const model::LibTarnManagedObjectImp& object);

}  // namespace editor
}  // namespace libtarn
