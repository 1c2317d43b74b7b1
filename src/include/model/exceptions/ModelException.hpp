#pragma once

#include <stdexcept>
#include <string>

namespace libtarn {
namespace model {
namespace exceptions {

/// A fault in the data of a document. what() is the whole message; nothing else is carried.
class ModelException : public std::runtime_error {
 public:
  explicit ModelException(const std::string& message);
};

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
