// Installed for DomDocument.hpp; hosts do not use it by name.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace libDomXml {

/// The text that the elements of a document point into: an array or a vector, whichever the host
/// handed over. Moving it leaves the characters where they are.
class DocumentText {
 public:
  /// Takes over `text`, which then holds the earlier array, or null. Frees an earlier vector.
  void swap(std::unique_ptr<char[]>& text) {
    array_.swap(text);
    vector_ = std::vector<char>();
  }
  /// Takes over `text`, which then holds the earlier vector, or none. Frees an earlier array.
  void swap(std::vector<char>& text) {
    vector_.swap(text);
    array_.reset();
  }
  /// Returns the first character; null when there is no text.
  char* data() { return array_ ? array_.get() : vector_.data(); }
  /// Returns true if there is no text.
  bool empty() const { return !array_ && vector_.empty(); }
  /// Returns the size of a vector in bytes, its terminating NUL included; 0 for an array, whose
  /// length is not known.
  std::size_t size() const { return vector_.size(); }
  /// Returns the capacity of a vector in bytes; 0 for an array.
  std::size_t capacity() const { return vector_.capacity(); }

 private:
  std::unique_ptr<char[]> array_;
  std::vector<char> vector_;
};

}  // namespace libDomXml
