#pragma once

#include <string>
#include <vector>

#include "files/InputFile.hpp"
#include "libtarn/util/TextPosition.hpp"

namespace tarn {

/// A file whose text a document takes over and changes. Finds line and column in the unchanged text
/// afterwards. Keeps a copy only of what cannot be read twice, such as a pipe. All functions throw
/// CommandError when the file cannot be read.
class TextFile {
 public:
  explicit TextFile(const std::string& path) : path_(path), file_(path) {}

  const std::string& path() const { return path_; }
  /// True if another object for the same path can read the text, too.
  bool isReopenable() const;

  /// Reads the whole text and appends a terminating NUL. May be called again. A NUL within the text
  /// is malformed, unless it shows that the text is in another encoding, which is then the error.
  std::vector<char> read();
  /// Line and column of the byte at `offset` in a text that read() returned.
  libtarn::util::TextPosition locate(std::size_t offset);
  /// Line and column of each of `offsets`, which ascend. Reads the file once.
  std::vector<libtarn::util::TextPosition> locate(const std::vector<std::size_t>& offsets);

 private:
  [[noreturn]] void refuseNul(const std::vector<char>& text, std::size_t distanceFromEnd) const;

  std::string path_;
  InputFile file_;
  bool isRead_ = false;
  std::vector<char> copy_;
};

}  // namespace tarn
