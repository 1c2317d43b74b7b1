#pragma once

namespace libtarn {
namespace model {

// Attributes that more than one source names. They are arrays, so that look-ups know their lengths.
constexpr char ACTION_ATTRIBUTE[] = "action";
constexpr char CLASS_ATTRIBUTE[] = "class";
constexpr char DATE_TIME_ATTRIBUTE[] = "dateTime";
constexpr char DIST_NAME_ATTRIBUTE[] = "distName";  // also DistinguishedName::ATTR_NAME
constexpr char NAME_ATTRIBUTE[] = "name";
constexpr char OPERATION_ATTRIBUTE[] = "operation";
constexpr char VERSION_ATTRIBUTE[] = "version";
constexpr char XMLNS_ATTRIBUTE[] = "xmlns";

// The only namespace that the library knows.
constexpr const char* XMLNS = "tarn21.xsd";

}  // namespace model
}  // namespace libtarn
