#pragma once

#include <cstddef>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// An index of elements by a unique key and by a key that many share. For LibTarnManagedObject:
/// distinguished name and class.
///
/// Holds pointers only. The keys of an element must not change while it is in the index. Lives as
/// long as its document's pool; nobody deletes it.
template <class T>
class TARN_API ITarnUniqueAndNonUniqueMultiIndex {
 public:
  /// Adds an element. Returns false, with nothing changed, when its unique key is taken.
  virtual bool add(T* element) = 0;
  /// Removes the entry of this element's unique key, whichever element it holds. Returns false when
  /// there is none.
  virtual bool remove(T* element) = 0;
  /// Returns the element of that unique key, or null.
  virtual T* findUniqueElement(const char* key) const = 0;
  /// Returns the elements that share the key, in the order in which they were added.
  virtual ManagedObjectCollection getNonUniqueCollection(const char* key) const = 0;
  /// Returns all elements in byte order of the unique keys.
  virtual ManagedObjectCollection getCollection() const = 0;
  /// Returns the number of elements.
  virtual std::size_t size() const = 0;
  /// Removes all elements.
  virtual void clear() = 0;

  virtual ~ITarnUniqueAndNonUniqueMultiIndex() = default;

  /// Allocates what the next add() may need, for an element whose unique key is `key`. That add()
  /// then does not throw, even when other elements have been removed in between. The default does
  /// nothing.
  virtual void prepareAdd(const char* /*key*/) {}

  /// Adds the elements of `count` entries at once. The serials count from 0 in document order.
  /// Called after a parse, with an empty index. Returns false, with nothing changed, when two
  /// elements have the same unique key or the index does not offer this, as is the default; the
  /// document then calls add() for each.
  virtual bool addAll(const ManagedObjectEntry* /*entries*/, std::size_t /*count*/) {
    return false;
  }
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
