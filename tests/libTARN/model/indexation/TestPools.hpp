#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <vector>

#include "libtarn/IMemoryPool.hpp"

namespace tarn_test {

/// Returns a given number of blocks and then none. Each is a heap allocation, so that the address
/// sanitizer knows its end.
class LimitedPool : public libDomXml::IMemoryPool {
 public:
  void* allocateMemory(unsigned int size) override {
    if (left_ == 0) return nullptr;
    --left_;
    const std::size_t words = (size + sizeof(void*) - 1) / sizeof(void*);
    blocks_.emplace_back(new void*[words]);
    // Nothing may rely on zeroed memory.
    std::memset(blocks_.back().get(), 0xA5, words * sizeof(void*));
    return blocks_.back().get();
  }
  void limit(std::size_t left) { left_ = left; }

 private:
  std::size_t left_ = static_cast<std::size_t>(-1);
  std::vector<std::unique_ptr<void*[]>> blocks_;
};

/// Returns parts of one array on the heap.
class ArrayPool : public libDomXml::IMemoryPool {
 public:
  explicit ArrayPool(std::size_t bytes) : words_(bytes / sizeof(void*)) {}

  void* allocateMemory(unsigned int size) override {
    const std::size_t needed = (size + sizeof(void*) - 1) / sizeof(void*);
    if (needed > words_.size() - used_) return nullptr;
    void* const memory = words_.data() + used_;
    used_ += needed;
    return memory;
  }
  void deallocateMemory(void* /*memory*/) override { ++givenBack_; }

  std::size_t usedBytes() const { return used_ * sizeof(void*); }
  std::size_t givenBack() const { return givenBack_; }

 private:
  std::vector<void*> words_;
  std::size_t used_ = 0;
  std::size_t givenBack_ = 0;
};

}  // namespace tarn_test
