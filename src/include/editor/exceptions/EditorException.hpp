#pragma once

#include <stdexcept>
#include <string>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace editor {
namespace exceptions {

/// A conflict between a delta and its source. what() is the whole message.
/// TarnMerge::mergeDocument() catches it.
class TARN_API EditorException : public std::runtime_error {
 public:
  /// `message` becomes what() unchanged.
  explicit EditorException(const std::string& message);
  ~EditorException() override;
};

}  // namespace exceptions
}  // namespace editor
}  // namespace libtarn
