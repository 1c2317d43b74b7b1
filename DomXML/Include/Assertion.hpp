#pragma once

#include "libtarn/TarnApi.hpp"

namespace libDomXml {

/// Prints "FILE:LINE: FUNCTION: assertion failed: TEXT" to standard error and aborts the process.
[[noreturn]] TARN_API void assertionFailed(const char* file, unsigned int line,
                                           const char* function, const char* text);

}  // namespace libDomXml

/// Stops the process when `condition` is false: the host broke a precondition, or an invariant of
/// the library is gone. Active in every build. `text` is what the message quotes; it is part of the
/// interface, since hosts recognise a failure by it. Never used for what document text can cause.
#define TARN_ASSERT(condition, text)                                                          \
  (static_cast<bool>(condition)                                                               \
       ? static_cast<void>(0)                                                                 \
       : ::libDomXml::assertionFailed(__FILE__, __LINE__, static_cast<const char*>(__func__), \
                                      text))
