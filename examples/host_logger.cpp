// The one function that a host has to define: where log lines go. Copy this file into the host, or
// write lines to whatever the host logs to.

#include <cstdio>
#include <libtarn/util/Logger.hpp>

// Called from whichever thread uses a document. One call of fprintf() is one whole line even when
// several threads log; what it throws would be dropped.
void libtarn::util::Logger::print(Level level, const char* location, const char* function,
                                  const char* message) {
  if (level != Level::ERROR) return;
  std::fprintf(stderr, "%s %s: %s\n", location, function, message);
}
