#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace fuzz {

/// The input as a NUL-terminated text in an allocation of exactly its size, so that the address
/// sanitizer detects every read past the end.
class Text {
 public:
  Text(const std::uint8_t* data, std::size_t size) : text_(new char[size + 1]), size_(size) {
    if (size > 0) std::memcpy(text_.get(), data, size);
    text_[size] = '\0';
  }
  explicit Text(const std::string& text)
      : Text(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()) {}

  char* get() { return text_.get(); }
  std::size_t size() const { return size_; }

 private:
  std::unique_ptr<char[]> text_;
  std::size_t size_;
};

}  // namespace fuzz
