#include "libtarn/model/exceptions/ModelException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

ModelException::ModelException(const std::string& message) : std::runtime_error(message) {}

ModelException::~ModelException() = default;

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
