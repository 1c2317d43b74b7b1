#pragma once

#include <string>

#include "documents/ValuePath.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnManagedObject.hpp"

namespace tarn {

/// True if `value` is not empty and nothing but white space, which a load reads as an empty value.
bool isBlank(const std::string& value);

/// What an assignment did.
enum class Assigned {
  Changed,
  Equal,    ///< The object had the value already.
  Lacking,  ///< The object has nothing at the path; nothing has changed.
  IsList,   ///< A list is at the path; nothing has changed.
  IsItem,   ///< An item is at the path; nothing has changed.
};

/// Sets the value at `path` in `object`.
Assigned assignValue(const ValuePath& path, const std::string& value,
                     libtarn::model::LibTarnManagedObject& object);

/// The message for a path that leads to a list or an item, which `assigned` says.
std::string severalValuesMessage(Assigned assigned, const std::string& path);

/// Adds the value to `object`, an object of `document` that has nothing at `path`: a parameter, or
/// a parameter of an extension that the object has. A path into a list or an extension is not taken
/// for the name of a parameter, unless `isName`. Returns false, with nothing changed, when there is
/// nothing that the value can be added to.
bool createValue(const ValuePath& path, bool isName, const std::string& value,
                 libtarn::model::LibTarnManagedObject& object,
                 libtarn::model::LibTarnDocument& document);

}  // namespace tarn
