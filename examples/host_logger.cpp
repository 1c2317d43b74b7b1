// The one function that a host has to define, the log callback. Copy this file into the host, or
// write the lines to the host's own log.

#include <cstdio>
#include <libtarn/util/Logger.hpp>

// Called on the thread that uses the document. One call of fprintf() writes a whole line even when
// several threads log. The library would drop an exception.
void libtarn::util::Logger::print(Level level, const char* location, const char* function,
                                  const char* message) {
  if (level != Level::ERROR) return;
  std::fprintf(stderr, "%s %s: %s\n", location, function, message);
}
