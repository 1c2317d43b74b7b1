#pragma once

// The rules of the format, one predicate each.
//
// The Validator asks them for every element and reports violations. A load asks them for what it
// has just read: when all of them are kept, no walk with a Validator is needed. The two get their
// facts in different ways, so the predicates take texts, counts and flags. docs/format.md has a row
// for each, under its name.

#include <cstddef>
#include <cstring>

#include "../../text/attributeNames.hpp"

namespace libtarn {
namespace model {
namespace validation {
namespace rules {

// The text of an absent attribute is null.

inline bool rootHasNamespace(const char* xmlns) { return xmlns && std::strcmp(xmlns, XMLNS) == 0; }

inline bool rootHasVersion(const char* version) { return version != nullptr; }

inline bool rootHasOneBody(std::size_t bodies) { return bodies == 1; }

inline bool bodyHasOneHeader(std::size_t headers) { return headers == 1; }

inline bool planHasObjects(bool isPlan, bool hasObject) { return !isPlan || hasObject; }

inline bool logHasTime(const char* dateTime) { return dateTime != nullptr; }

inline bool logHasAction(const char* action) { return action != nullptr; }

inline bool objectHasClass(const char* className) { return className != nullptr; }

inline bool objectHasName(const char* distName) { return distName != nullptr; }

/// `validator` is an IDistinguishedNameValidator; the name is not null.
template <class NameValidator>
bool objectHasValidName(const NameValidator& validator, const char* distName) {
  return validator.isValid(distName);
}

/// For a parameter anywhere but in a list.
inline bool parameterHasName(const char* name) { return name != nullptr; }

inline bool listHasName(const char* name) { return name != nullptr; }

inline bool listHoldsOneKind(bool hasValues, bool hasItems) { return !hasValues || !hasItems; }

}  // namespace rules
}  // namespace validation
}  // namespace model
}  // namespace libtarn
