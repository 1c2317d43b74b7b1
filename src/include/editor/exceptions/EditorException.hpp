#pragma once

#include <stdexcept>
#include <string>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace editor {
namespace exceptions {

/// A conflict between a delta and its source. what() is the whole message. Never leaves
/// TarnMerge::mergeDocument().
class TARN_API EditorException : public std::runtime_error {
 public:
  /// `message` is what() as it stands.
  explicit EditorException(const std::string& message);
  ~EditorException() override;
};

}  // namespace exceptions
}  // namespace editor
}  // namespace libtarn
