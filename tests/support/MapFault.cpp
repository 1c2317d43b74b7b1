#include "support/MapFault.hpp"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TARN_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define TARN_SANITIZED
#endif
#endif

namespace {

thread_local std::size_t callsToFault = 0;
thread_local bool isFailing = false;

}  // namespace

namespace tarn_test {

bool canFailMaps() {
#ifdef TARN_SANITIZED
  return false;
#else
  return true;
#endif
}

MapFault::MapFault(std::size_t number) { callsToFault = number; }

MapFault::~MapFault() {
  callsToFault = 0;
  isFailing = false;
}

bool MapFault::happened() const { return isFailing; }

}  // namespace tarn_test

#ifndef TARN_SANITIZED

// Replaces that of the C library.
extern "C" void* mmap(void* address, std::size_t length, int protection, int flags, int file,
                      off_t offset) noexcept {
  if (callsToFault > 0 && --callsToFault == 0) isFailing = true;
  if (isFailing) {
    errno = ENOMEM;
    return MAP_FAILED;
  }
#ifdef SYS_mmap2
  constexpr off_t UNIT = 4096;  // of the call, whatever a page is
  return reinterpret_cast<void*>(
      syscall(SYS_mmap2, address, length, protection, flags, file, offset / UNIT));
#else
  return reinterpret_cast<void*>(
      syscall(SYS_mmap, address, length, protection, flags, file, offset));
#endif
}

#endif
