#pragma once

namespace libtarn {
namespace model {

// Attributes that more than one class of element has. "distName" is DistinguishedName::ATTR_NAME.
constexpr const char* NAME_ATTRIBUTE = "name";
constexpr const char* VERSION_ATTRIBUTE = "version";

}  // namespace model
}  // namespace libtarn
