#include "model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

ModelException::ModelException(const std::string& message) : std::runtime_error(message) {}

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
