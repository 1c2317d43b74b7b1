#pragma once

#include <cstddef>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// Elements by a unique key and by a key that many share. For LibTarnManagedObject: distinguished
/// name and class.
///
/// Holds pointers only. The keys of an element must not change while it is in the index. Lives as
/// long as its document's pool; nobody deletes it.
template <class T>
class TARN_API ITarnUniqueAndNonUniqueMultiIndex {
 public:
  /// False, with nothing changed, when the unique key is taken.
  virtual bool add(T* element) = 0;
  /// Removes the entry of this element's unique key, whichever element it holds. False when there
  /// is none.
  virtual bool remove(T* element) = 0;
  /// The element of that unique key, or null.
  virtual T* findUniqueElement(const char* key) const = 0;
  /// The elements that share the key, in the order in which they were added.
  virtual ManagedObjectCollection getNonUniqueCollection(const char* key) const = 0;
  /// All elements in byte order of the unique keys.
  virtual ManagedObjectCollection getCollection() const = 0;
  /// How many elements there are.
  virtual std::size_t size() const = 0;
  /// Removes all elements.
  virtual void clear() = 0;

  virtual ~ITarnUniqueAndNonUniqueMultiIndex() = default;

  /// Takes the memory that the next add() may need, of an element whose unique key is `key`; it
  /// then does not throw, also when other elements have been removed before it.
  virtual void prepareAdd(const char* /*key*/) {}

  /// Adds the elements of `count` entries, numbered from 0 in document order, all at once; asked of
  /// an empty index when a document has been parsed. False, with nothing changed, when two share
  /// the unique key, or when the index does not offer this, which is the default: add() is then
  /// called for each.
  virtual bool addAll(const ManagedObjectEntry* /*entries*/, std::size_t /*count*/) {
    return false;
  }
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
