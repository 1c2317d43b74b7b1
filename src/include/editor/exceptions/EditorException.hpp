#pragma once

#include <stdexcept>
#include <string>

namespace libtarn {
namespace editor {
namespace exceptions {

/// A conflict between a delta and its source. what() is the whole message. Never leaves
/// TarnMerge::mergeDocument().
class EditorException : public std::runtime_error {
 public:
  explicit EditorException(const std::string& message);
};

}  // namespace exceptions
}  // namespace editor
}  // namespace libtarn
