#pragma once

#include <string>

namespace libtarn {
namespace model {
namespace validation {

/// A broken rule of the format, as a Validator records it.
struct Violation {
  /// The text that the exception for this violation has.
  std::string message;
  /// The element that breaks the rule, in the form of Validator::getPath().
  std::string path;
};

}  // namespace validation
}  // namespace model
}  // namespace libtarn
