#pragma once

// The rules that validation asks for, one predicate each.
//
// The Validator asks them of every element and reports what is broken. A load asks them of what it
// has just read: when all of them are kept, no walk with the Validator is needed. The predicates
// take plain facts, since the two come by them in different ways. docs/format.md has a row for
// each, under its name.

#include <cstddef>
#include <cstring>

#include "../attributeNames.hpp"

namespace libtarn {
namespace model {
namespace validation {
namespace rules {

// Texts of attributes are null when the attribute is absent.

inline bool rootHasNamespace(const char* xmlns) { return xmlns && std::strcmp(xmlns, XMLNS) == 0; }

inline bool rootHasVersion(const char* version) { return version != nullptr; }

inline bool rootHasOneBody(std::size_t bodies) { return bodies == 1; }

inline bool bodyHasOneHeader(std::size_t headers) { return headers == 1; }

inline bool planHasObjects(bool isPlan, bool hasObject) { return !isPlan || hasObject; }

inline bool logHasTime(const char* dateTime) { return dateTime != nullptr; }

inline bool logHasAction(const char* action) { return action != nullptr; }

inline bool objectHasClass(const char* className) { return className != nullptr; }

inline bool objectHasName(const char* distName) { return distName != nullptr; }

/// `validator` is an IDistinguishedNameValidator; the name is there.
template <class NameValidator>
bool objectHasValidName(const NameValidator& validator, const char* distName) {
  return validator.isValid(distName);
}

/// Of a parameter anywhere but in a list.
inline bool parameterHasName(const char* name) { return name != nullptr; }

inline bool listHasName(const char* name) { return name != nullptr; }

inline bool listHoldsOneKind(bool hasValues, bool hasItems) { return !hasValues || !hasItems; }

}  // namespace rules
}  // namespace validation
}  // namespace model
}  // namespace libtarn
