// Loaded before a program: lets one of its allocations fail, the one of the number in
// TARN_FAIL_NEW (operator new) or TARN_FAIL_MAP (mmap), from 1. They count from the program's first
// call of setlocale(), with which its main() begins: what fails before has nobody to tell it. With
// TARN_FAULT_FILE that file is made when it has come to that.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> armed{false};

class Fault {
 public:
  explicit Fault(const char* variable) {
    const char* const text = std::getenv(variable);
    if (text) left_ = std::atol(text);
  }

  // True for the one call.
  bool happens() {
    if (!armed || left_ <= 0 || --left_ != 0) return false;
    if (const char* const path = std::getenv("TARN_FAULT_FILE")) {
      close(open(path, O_CREAT | O_WRONLY, 0600));
    }
    return true;
  }

 private:
  std::atomic<long> left_{0};
};

Fault& newFault() {
  static Fault fault("TARN_FAIL_NEW");
  return fault;
}

Fault& mapFault() {
  static Fault fault("TARN_FAIL_MAP");
  return fault;
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = newFault().happens() ? nullptr : std::malloc(size != 0 ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

void* operator new[](std::size_t size) { return operator new(size); }

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

extern "C" char* setlocale(int category, const char* locale) noexcept {
  using SetLocale = char* (*)(int, const char*);
  static const auto next = reinterpret_cast<SetLocale>(dlsym(RTLD_NEXT, "setlocale"));
  char* const result = next(category, locale);
  armed = true;
  return result;
}

extern "C" void* mmap(void* address, std::size_t length, int protection, int flags, int file,
                      off_t offset) noexcept {
  using Map = void* (*)(void*, std::size_t, int, int, int, off_t);
  static const auto next = reinterpret_cast<Map>(dlsym(RTLD_NEXT, "mmap"));
  if (mapFault().happens()) {
    errno = ENOMEM;
    return MAP_FAILED;
  }
  return next(address, length, protection, flags, file, offset);
}
