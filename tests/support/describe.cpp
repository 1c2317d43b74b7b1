#include "support/describe.hpp"

namespace tarn_test {

using libtarn::editor::Difference;

const char* nameOf(Difference::Part part) {
  static const char* const NAMES[] = {"Body",
                                      "Header",
                                      "Log",
                                      "Object",
                                      "Class",
                                      "Version",
                                      "Operation",
                                      "Attribute",
                                      "Text",
                                      "Other",
                                      "Parameter",
                                      "List",
                                      "ListValue",
                                      "Item",
                                      "Component",
                                      "Extension",
                                      "ExtensionParameter"};
  return NAMES[static_cast<int>(part)];
}

std::string describe(const Difference& difference) {
  const char* const signs = "+-~";
  std::string line = signs[static_cast<int>(difference.kind)] +
                     std::string(nameOf(difference.part)) + " " + difference.distName + " " +
                     difference.path();
  if (difference.oldValue) line += std::string(" ") + difference.oldValue;
  if (difference.oldValue && difference.newValue) line += " ->";
  if (difference.newValue) line += std::string(" ") + difference.newValue;
  return line;
}

}  // namespace tarn_test
