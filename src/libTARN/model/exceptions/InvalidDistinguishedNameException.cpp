#include "libtarn/model/exceptions/InvalidDistinguishedNameException.hpp"

namespace libtarn {
namespace model {
namespace exceptions {

namespace {

std::string messageFor(const char* distName) {
  if (!distName) return "Invalid distinguished name";
  return std::string("Invalid distinguished name: '") + distName + "'";
}

}  // namespace

InvalidDistinguishedNameException::InvalidDistinguishedNameException(const char* distName)
    : ModelException(messageFor(distName)) {}

InvalidDistinguishedNameException::~InvalidDistinguishedNameException() = default;

}  // namespace exceptions
}  // namespace model
}  // namespace libtarn
