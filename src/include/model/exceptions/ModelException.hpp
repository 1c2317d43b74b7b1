#pragma once

#include <stdexcept>
#include <string>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

/// A fault in the data of a document. what() is the whole message; nothing else is carried.
class TARN_API ModelException : public std::runtime_error {
 public:
  /// `message` is what() as it stands.
  explicit ModelException(const std::string& message);
  ~ModelException() override;
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
