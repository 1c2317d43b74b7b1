#pragma once

#include <cstddef>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {
namespace indexation {

/// Elements of one kind by name, no two of one name. For Scalar and List.
///
/// Holds pointers only. An element's name must not change while it is in the index. Lives as long
/// as its document's pool; nobody deletes it.
template <class T>
class TARN_API ITarnUniqueIndex {
 public:
  /// False, with nothing changed, when the name is taken.
  virtual bool add(T* element) = 0;
  /// Removes the entry of this element's name, whichever element it holds. False when there is
  /// none.
  virtual bool remove(T* element) = 0;
  virtual bool remove(const char* name) = 0;
  /// The element of that name, or null.
  virtual T* find(const char* name) const = 0;
  /// All entries in byte order of the names.
  virtual TarnCollection<ParameterEntry<T>> getCollection() const = 0;
  /// How many entries there are.
  virtual std::size_t size() const = 0;

  virtual ~ITarnUniqueIndex() = default;
};

}  // namespace indexation
}  // namespace model
}  // namespace libtarn
