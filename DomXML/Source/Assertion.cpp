#include "libtarn/Assertion.hpp"

#include <cstdio>
#include <cstdlib>

namespace libDomXml {

void assertionFailed(const char* file, unsigned int line, const char* function, const char* text) {
  std::fprintf(stderr, "%s:%u: %s: assertion failed: %s\n", file, line, function, text);
  std::fflush(stderr);
  std::abort();
}

}  // namespace libDomXml
