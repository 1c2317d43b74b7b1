#pragma once

#include <string>
#include <vector>

#include "files/InputFile.hpp"
#include "libtarn/util/TextPosition.hpp"

namespace tarn {

/// A file whose text a document takes over and changes; of the text as it was, places can be told
/// afterwards. Keeps a copy only when the file cannot be read twice, as a pipe. All throw
/// CommandError when the file cannot be read.
class TextFile {
 public:
  explicit TextFile(const std::string& path) : path_(path), file_(path) {}

  const std::string& path() const { return path_; }

  /// The whole text with a zero byte behind it, again and again. A zero byte within it is
  /// malformed.
  std::vector<char> read();
  /// Line and column of the byte at `offset`, which a text that read() gave had.
  libtarn::util::TextPosition locate(std::size_t offset);

 private:
  [[noreturn]] void refuseZeroByte(const std::vector<char>& text,
                                   std::size_t distanceFromEnd) const;

  std::string path_;
  InputFile file_;
  bool isRead_ = false;
  std::vector<char> copy_;
};

}  // namespace tarn
