#pragma once

#include <optional>
#include <string>

#include "libtarn/model/LibTarnManagedObject.hpp"

namespace libtarn {
namespace model {

/// Stands for any distinguished name.
constexpr const char* ANY_DIST_NAME = "_-_";

/// The name that LibTarnManagedObject::change() is to give an object that has the name `current`:
/// the name of `values` in place of the first occurrence of the pattern's. Nothing when `values`
/// has no name to give.
std::optional<std::string> changedDistName(const char* current, const LibTarnManagedObject& pattern,
                                           const LibTarnManagedObject& values);

}  // namespace model
}  // namespace libtarn
