#include "libtarn/editor/Difference.hpp"

#include "../text/attributeNames.hpp"

namespace libtarn {
namespace editor {

std::string Difference::path() const {
  switch (part) {
    case Part::Class:
      return model::CLASS_ATTRIBUTE;
    case Part::Version:
      return model::VERSION_ATTRIBUTE;
    case Part::Operation:
      return model::OPERATION_ATTRIBUTE;
    default:
      break;
  }
  std::string path = name ? name : "";
  if (position > 0) path += '[' + std::to_string(position) + ']';
  if (component) path += std::string(".") + component;
  if (part == Part::Attribute) return path + '@' + attribute;
  if (part != Part::Text && part != Part::Other) return path;
  if (!path.empty()) path += '.';
  return path + (part == Part::Text ? "text()" : "*");
}

}  // namespace editor
}  // namespace libtarn
