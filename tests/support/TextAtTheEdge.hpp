#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <new>
#include <string>

namespace tarn_test {

/// A text whose terminator is the last byte that may be read.
class TextAtTheEdge {
 public:
  explicit TextAtTheEdge(const std::string& text) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t readable = (text.size() / page + 1) * page;
    size_ = readable + page;
    void* const mapped =
        mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    pages_ = static_cast<char*>(mapped);
    mprotect(pages_ + readable, page, PROT_NONE);
    text_ = pages_ + readable - text.size() - 1;
    std::memcpy(text_, text.c_str(), text.size() + 1);
  }
  TextAtTheEdge(const TextAtTheEdge&) = delete;
  TextAtTheEdge& operator=(const TextAtTheEdge&) = delete;
  ~TextAtTheEdge() { munmap(pages_, size_); }

  char* text() { return text_; }

 private:
  char* pages_;
  char* text_;
  std::size_t size_;
};

}  // namespace tarn_test
