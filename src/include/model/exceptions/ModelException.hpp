#pragma once

#include <stdexcept>
#include <string>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// Reports a fault in the data of a document. what() is the whole message; the exception carries
/// nothing else.
class TARN_API ModelException : public std::runtime_error {
 public:
  /// `message` becomes what() unchanged.
  explicit ModelException(const std::string& message);
  ~ModelException() override;
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
