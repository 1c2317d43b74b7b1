#pragma once

#include <unistd.h>

#include <utility>

namespace tarn {

/// Owns a file descriptor and closes it. Less than 0: none.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }

  int get() const { return number_; }
  bool isOpen() const { return number_ >= 0; }
  /// Returns false, with errno, when data could not be written: some file systems report it only
  /// here.
  bool close() { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

}  // namespace tarn
