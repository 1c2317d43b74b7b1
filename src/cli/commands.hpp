#pragma once

#include <string>

#include "ObjectMask.hpp"

namespace tarn {

// The commands. Each writes to standard output and throws CommandError.

/// The printed form of the document in `path`.
void printCommand(const std::string& path);

/// The managed objects of `path` that match `mask`, a line each: name, tab, class.
void listCommand(const std::string& path, const ObjectMask& mask);

}  // namespace tarn
