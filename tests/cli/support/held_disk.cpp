// Preloaded into a program: its first flush of a file to the disk creates the file TARN_HELD_FILE
// and waits until that is removed, so that a test can make changes meanwhile. With TARN_NO_PAUSE
// pauses of the program take no time.

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
