#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "util/TextPosition.hpp"

namespace tarn {

/// A file whose text a document takes over and changes; of the text as it was, places can be told
/// afterwards. Keeps a copy only when the file cannot be read twice, as a pipe. All throw
/// CommandError when the file cannot be read.
class TextFile {
 public:
  explicit TextFile(const std::string& path);

  /// The whole text with a zero byte behind it.
  std::vector<char> read();
  /// Line and column of the byte at `offset`, which a text that read() gave had.
  libtarn::util::TextPosition locate(std::size_t offset);

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };

  std::size_t readBlock(char* block, std::size_t size);

  std::string path_;
  std::unique_ptr<std::FILE, CloseFile> file_;
  bool isSeekable_ = false;
  std::vector<char> copy_;
};

}  // namespace tarn
