// Installed for DomDocument.hpp; hosts do not use it by name.
#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace libDomXml {

/// Owns the text that the elements of a document point into: an array or a vector, whichever the
/// host handed over. Moving it leaves the characters where they are.
class DocumentText {
 public:
  /// Takes over `text` and hands back the earlier text in its place; an earlier vector is freed.
  void swap(std::unique_ptr<char[]>& text) {
    array_.swap(text);
    vector_ = std::vector<char>();
  }
  /// Likewise; an earlier array is freed.
  void swap(std::vector<char>& text) {
    vector_.swap(text);
    array_.reset();
  }
  /// First character; null when there is no text.
  char* data() { return array_ ? array_.get() : vector_.data(); }
  bool empty() const { return !array_ && vector_.empty(); }
  /// Size and memory of a vector in bytes. The length of an array is not known: 0.
  std::size_t size() const { return vector_.size(); }
  std::size_t capacity() const { return vector_.capacity(); }

 private:
  std::unique_ptr<char[]> array_;
  std::vector<char> vector_;
};

}  // namespace libDomXml
