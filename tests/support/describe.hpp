#pragma once

#include <string>

#include "libtarn/editor/Difference.hpp"

namespace tarn_test {

/// The name of a part, as the enumeration has it.
const char* nameOf(libtarn::editor::Difference::Part part);

/// A difference in one line: "+", "-" or "~", the part, the distinguished name, the path and the
/// values.
std::string describe(const libtarn::editor::Difference& difference);

}  // namespace tarn_test
