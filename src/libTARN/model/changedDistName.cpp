#include "changedDistName.hpp"

#include <cstring>

#include "../text/patternText.hpp"

namespace libtarn {
namespace model {

std::optional<std::string> changedDistName(const char* current, const LibTarnManagedObject& pattern,
                                           const LibTarnManagedObject& values) {
  const DistinguishedName replacement = values.getDistName();
  if (!replacement.getText() || isSameText(replacement.getText(), ANY_DIST_NAME)) {
    return std::nullopt;
  }
  std::string distName = current;
  const DistinguishedName replaced = pattern.getDistName();
  const std::size_t position =
      replaced.getText() ? distName.find(replaced.getText()) : std::string::npos;
  if (position != std::string::npos) {
    distName.replace(position, std::strlen(replaced.getText()), replacement.getText());
  }
  return distName;
}

}  // namespace model
}  // namespace libtarn
