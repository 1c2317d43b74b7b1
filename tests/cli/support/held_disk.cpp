// Loaded before a program: the first flush of a file to the disk makes the file that TARN_HELD_FILE
// names and waits until it is gone, so that a test can do what it wants to meanwhile. With
// TARN_NO_PAUSE no pause of the program takes any time.

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>

extern "C" int fsync(int file) {
  using Flush = int (*)(int);
  static const auto next = reinterpret_cast<Flush>(dlsym(RTLD_NEXT, "fsync"));
  static bool wasHeld = false;
  const char* const mark = std::getenv("TARN_HELD_FILE");
  if (mark && !wasHeld) {
    wasHeld = true;
    close(open(mark, O_CREAT | O_WRONLY, 0600));
    while (access(mark, F_OK) == 0) poll(nullptr, 0, 1);
  }
  return next(file);
}

extern "C" int nanosleep(const struct timespec* time, struct timespec* rest) {
  using Pause = int (*)(const struct timespec*, struct timespec*);
  static const auto next = reinterpret_cast<Pause>(dlsym(RTLD_NEXT, "nanosleep"));
  return std::getenv("TARN_NO_PAUSE") ? 0 : next(time, rest);
}
