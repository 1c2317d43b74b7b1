#pragma once

#include "libtarn/TarnApi.hpp"

namespace libDomXml {

/// Prints "FILE:LINE: FUNCTION: assertion failed: TEXT" to standard error and aborts the process.
[[noreturn]] TARN_API void assertionFailed(const char* file, unsigned int line,
                                           const char* function, const char* text);

}  // namespace libDomXml

/// Aborts the process when `condition` is false: the host broke a precondition, or an invariant of
/// the library does not hold. Active in every build. Not used for anything that document text can
/// cause.
///
/// `text` is what the message quotes. It is part of the interface, since hosts recognise a failure
/// by it.
#define TARN_ASSERT(condition, text)                                                          \
  (static_cast<bool>(condition)                                                               \
       ? static_cast<void>(0)                                                                 \
       : ::libDomXml::assertionFailed(__FILE__, __LINE__, static_cast<const char*>(__func__), \
                                      text))
