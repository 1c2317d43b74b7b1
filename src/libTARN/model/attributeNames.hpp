#pragma once

namespace libtarn {
namespace model {

// Attributes that more than one source names. "distName" is DistinguishedName::ATTR_NAME.
constexpr const char* ACTION_ATTRIBUTE = "action";
constexpr const char* CLASS_ATTRIBUTE = "class";
constexpr const char* DATE_TIME_ATTRIBUTE = "dateTime";
constexpr const char* NAME_ATTRIBUTE = "name";
constexpr const char* VERSION_ATTRIBUTE = "version";
constexpr const char* XMLNS_ATTRIBUTE = "xmlns";

// The one namespace that the library knows.
constexpr const char* XMLNS = "tarn21.xsd";

}  // namespace model
}  // namespace libtarn
