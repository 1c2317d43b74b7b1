#include "check.hpp"

#include <cstdio>
#include <cstdlib>

#include "libtarn/util/Logger.hpp"

// The log callback of the targets: drops lines, but reads their texts.
void libtarn::util::Logger::print(Level /*level*/, const char* /*location*/,
                                  const char* /*function*/, const char* message) {
  if (!message) std::abort();
}

namespace fuzz {

void fail(const std::string& what) {
  std::fprintf(stderr, "fuzz target: %s\n", what.c_str());
  std::abort();
}

}  // namespace fuzz
