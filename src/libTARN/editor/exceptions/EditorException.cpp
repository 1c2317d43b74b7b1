#include "libtarn/editor/exceptions/EditorException.hpp"

namespace libtarn {
namespace editor {
namespace exceptions {

EditorException::EditorException(const std::string& message) : std::runtime_error(message) {}

EditorException::~EditorException() = default;

}  // namespace exceptions
}  // namespace editor
}  // namespace libtarn
