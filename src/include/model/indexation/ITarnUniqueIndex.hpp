#pragma once

#include <cstddef>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// An index of elements of one kind by name; names are unique. For Scalar and List.
///
/// Holds pointers only. An element's name must not change while it is in the index. Lives as long
/// as its document's pool; nobody deletes it.
template <class T>
class TARN_API ITarnUniqueIndex {
 public:
  /// Adds an element. Returns false, with nothing changed, when its name is taken.
  virtual bool add(T* element) = 0;
  /// Removes the entry of this element's name, whichever element it holds. Returns false when there
  /// is none.
  virtual bool remove(T* element) = 0;
  /// Removes the entry of that name. Returns false when there is none.
  virtual bool remove(const char* name) = 0;
  /// Returns the element of that name, or null.
  virtual T* find(const char* name) const = 0;
  /// Returns all entries in byte order of the names.
  virtual TarnCollection<ParameterEntry<T>> getCollection() const = 0;
  /// Returns the number of entries.
  virtual std::size_t size() const = 0;

  virtual ~ITarnUniqueIndex() = default;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
