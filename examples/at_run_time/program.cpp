// A program that loads libtarn only when it needs it.
//
// Usage: program PLUGIN DOCUMENT
//
// dlsym() finds functions by name, but the library's interface is classes. So the code that uses
// them is in a plugin of the host, which is linked with libtarn and exports one C function.
// dlopen() of the plugin loads the library, too.

#include <dlfcn.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc != 3) return 64;
  void* const plugin = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (!plugin) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 5;
  }
  using CountObjects = long(const char*);
  auto* const countObjects = reinterpret_cast<CountObjects*>(dlsym(plugin, "countObjects"));
  if (!countObjects) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 5;
  }
  std::printf("%ld objects\n", countObjects(argv[2]));
  return dlclose(plugin) == 0 ? 0 : 5;
}
