// Preloaded into a program: lets one of its allocations fail, selected by a number from 1 on in
// TARN_FAIL_NEW (operator new), TARN_FAIL_MALLOC (malloc() and its kin, called by others),
// TARN_FAIL_MAP (mmap) or TARN_FAIL_THREAD (the start of a thread). With TARN_FAIL_LASTING all
// later ones fail, too. The count starts at the program's first call of setlocale(), the first one
// in its main(), or with TARN_FAIL_EARLY at its start. When the fault happens, the file
// TARN_FAULT_FILE is created.

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> armed{false};

// True once the count has started.
bool isArmed() {
  static const bool early = std::getenv("TARN_FAIL_EARLY") != nullptr;
  return early || armed;
}

class Fault {
 public:
  explicit Fault(const char* variable) {
    const char* const text = std::getenv(variable);
    if (text) left_ = std::atol(text);
  }

  // True for the selected call and, if the fault is lasting, for all after it.
  bool happens() {
    if (!isArmed()) return false;
    if (isLasting_ && hasHappened_) return true;
    if (left_ <= 0 || --left_ != 0) return false;
    hasHappened_ = true;
    if (const char* const path = std::getenv("TARN_FAULT_FILE")) {
      close(open(path, O_CREAT | O_WRONLY, 0600));
    }
    return true;
  }

 private:
  std::atomic<long> left_{0};
  std::atomic<bool> hasHappened_{false};
  bool isLasting_ = std::getenv("TARN_FAIL_LASTING") != nullptr;
};

// The file of the trace, or null.
std::FILE* traceFile() {
  static const char* const path = std::getenv("TARN_TRACE_FILE");
  static std::FILE* const file = path ? std::fopen(path, "w") : nullptr;
  return file;
}

// Writes the offset of the caller in its library, whose address differs from run to run.
void trace(std::size_t size, const void* caller) {
  if (!isArmed() || !traceFile()) return;
  Dl_info info{};
  if (dladdr(caller, &info) == 0) return;
  const auto offset = static_cast<const char*>(caller) - static_cast<const char*>(info.dli_fbase);
  std::fprintf(traceFile(), "%zu %tx %s\n", size, offset, info.dli_fname);
}

Fault& newFault() {
  static Fault fault("TARN_FAIL_NEW");
  return fault;
}

Fault& mallocFault() {
  static Fault fault("TARN_FAIL_MALLOC");
  return fault;
}

Fault& threadFault() {
  static Fault fault("TARN_FAIL_THREAD");
  return fault;
}

bool failsMalloc() {
  if (!mallocFault().happens()) return false;
  errno = ENOMEM;
  return true;
}

Fault& mapFault() {
  static Fault fault("TARN_FAIL_MAP");
  return fault;
}

}  // namespace

// Other names of the C library's functions that are replaced below.
extern "C" void* __libc_malloc(std::size_t size);
extern "C" void* __libc_calloc(std::size_t count, std::size_t size);
extern "C" void* __libc_realloc(void* memory, std::size_t size);

namespace {

void* allocate(std::size_t size, const void* caller) {
  trace(size, caller);
  void* const memory = newFault().happens() ? nullptr : __libc_malloc(size != 0 ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

}  // namespace

extern "C" void* malloc(std::size_t size) noexcept {
  return failsMalloc() ? nullptr : __libc_malloc(size);
}

extern "C" void* calloc(std::size_t count, std::size_t size) noexcept {
  return failsMalloc() ? nullptr : __libc_calloc(count, size);
}

extern "C" void* realloc(void* memory, std::size_t size) noexcept {
  return failsMalloc() ? nullptr : __libc_realloc(memory, size);
}

void* operator new(std::size_t size) { return allocate(size, __builtin_return_address(0)); }
void* operator new[](std::size_t size) { return allocate(size, __builtin_return_address(0)); }

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

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*start)(void*), void* argument) noexcept {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto next = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  return threadFault().happens() ? EAGAIN : next(thread, attributes, start, argument);
}
