// A program that loads libtarn only when it needs it.
//
// Usage: program PLUGIN DOCUMENT
//
// The library's interface is classes, which dlsym() does not find by name. So what uses them is in
// a plugin of the host, which is linked with libtarn and has one plain function: dlopen() of the
// plugin brings the library along.

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
