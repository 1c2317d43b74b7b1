#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace tarn {

/// A file, or standard input for "-", to read from its start, unpacked when it is compressed with
/// gzip. All throw CommandError when it cannot be read.
class InputFile {
 public:
  explicit InputFile(const std::string& path);

  /// Whether one was read that was at `path`, a path without links, when it was opened.
  static bool hasReadFileAt(const std::string& path);
  /// Whether it was not there any more when it was opened here: standard input is opened before the
  /// command begins.
  static bool hasReadFormerFileAt(const std::string& path);

  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  /// Up to `size` bytes, 0 at the end only.
  std::size_t read(char* block, std::size_t size);
  /// Back to the start, which a pipe has not.
  void rewind();
  bool isSeekable() const { return isSeekable_; }
  /// Bytes in the file as it lies, compressed or not; 0 for a pipe.
  std::uint64_t size() const { return size_; }

 private:
  struct Reader;

  std::string path_;
  std::unique_ptr<Reader> reader_;
  bool isSeekable_ = false;
  std::uint64_t size_ = 0;
};

}  // namespace tarn
