#pragma once

#include <vector>

#include "libtarn/editor/Difference.hpp"

namespace tarn {

/// How differences are written.
struct DifferenceForm {
  bool json = false;        ///< An object on each line, otherwise a line of text for each.
  bool operations = false;  ///< The contents of an object have its operation, too.
};

/// Writes differences, one on each line, to standard output: those outside of objects, then those
/// of the objects in the natural order of their names.
///
/// A line of text is "DN: PATH: OLD -> NEW", "DN: PATH: added: NEW" or "DN: PATH: removed: OLD",
/// for an object "DN: added" or "DN: removed". It is printable; backslashes, tabs and line ends in
/// values are escaped, and an empty value is ''. JSON also has everything that an added or removed
/// object holds. Throws CommandError and OutputClosed.
void writeDifferences(std::vector<libtarn::editor::Difference> differences,
                      const DifferenceForm& form);

}  // namespace tarn
