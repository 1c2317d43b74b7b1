// Preloaded into a program: its first flush of a file to the disk, or with TARN_HELD_RENAME its
// renaming of that number, creates the file TARN_HELD_FILE and waits until that is removed, so that
// a test can make changes meanwhile. With TARN_NO_PAUSE pauses of the program take no time; with
// TARN_NO_LINKS files get no second names.

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

void hold() {
  const char* const mark = std::getenv("TARN_HELD_FILE");
  if (!mark) return;
  close(open(mark, O_CREAT | O_WRONLY, 0600));
  while (access(mark, F_OK) == 0) poll(nullptr, 0, 1);
}

}  // namespace

extern "C" int fsync(int file) {
  using Flush = int (*)(int);
  static const auto next = reinterpret_cast<Flush>(dlsym(RTLD_NEXT, "fsync"));
  static bool wasHeld = std::getenv("TARN_HELD_RENAME") != nullptr;
  if (!wasHeld) {
    wasHeld = true;
    hold();
  }
  return next(file);
}

extern "C" int renameat(int oldFolder, const char* oldName, int newFolder,
                        const char* newName) noexcept {
  using Rename = int (*)(int, const char*, int, const char*);
  static const auto next = reinterpret_cast<Rename>(dlsym(RTLD_NEXT, "renameat"));
  static int left =
      std::getenv("TARN_HELD_RENAME") ? std::atoi(std::getenv("TARN_HELD_RENAME")) : 0;
  if (left > 0 && --left == 0) hold();
  return next(oldFolder, oldName, newFolder, newName);
}

extern "C" int linkat(int oldFolder, const char* oldName, int newFolder, const char* newName,
                      int flags) noexcept {
  using Link = int (*)(int, const char*, int, const char*, int);
  static const auto next = reinterpret_cast<Link>(dlsym(RTLD_NEXT, "linkat"));
  if (!std::getenv("TARN_NO_LINKS")) return next(oldFolder, oldName, newFolder, newName, flags);
  errno = EPERM;
  return -1;
}

extern "C" int nanosleep(const struct timespec* time, struct timespec* rest) {
  using Pause = int (*)(const struct timespec*, struct timespec*);
  static const auto next = reinterpret_cast<Pause>(dlsym(RTLD_NEXT, "nanosleep"));
  return std::getenv("TARN_NO_PAUSE") ? 0 : next(time, rest);
}
