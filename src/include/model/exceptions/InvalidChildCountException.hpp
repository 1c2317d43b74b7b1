#pragma once

#include <cstddef>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// Reports too few or too many children of one kind.
class TARN_API InvalidChildCountException : public ModelException {
 public:
  /// `message` becomes what() unchanged.
  explicit InvalidChildCountException(const std::string& message);
  ~InvalidChildCountException() override;

  /// Returns an exception for `count` children where `min` to `max`, inclusive, are valid;
  /// `element` is a path.
  static InvalidChildCountException instance(const char* childTag, const char* element,
                                             std::size_t min, std::size_t max, std::size_t count);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
