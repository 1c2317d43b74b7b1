#pragma once

#include <cstddef>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// Too few or too many children of one kind.
class TARN_API InvalidChildCountException : public ModelException {
 public:
  /// `message` is what() as it stands.
  explicit InvalidChildCountException(const std::string& message);
  ~InvalidChildCountException() override;

  /// `element`: its path; `min` to `max`, inclusive, would do.
  static InvalidChildCountException instance(const char* childTag, const char* element,
                                             std::size_t min, std::size_t max, std::size_t count);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
