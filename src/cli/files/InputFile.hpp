#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace tarn {

/// Reads a file, or standard input for "-", from its start, and decompresses it when it is a gzip
/// file. All functions throw CommandError when it cannot be read.
class InputFile {
 public:
  explicit InputFile(const std::string& path);

  /// True if this process has opened the file at `path`, a path without links, to read it.
  static bool hasReadFileAt(const std::string& path);
  /// True if that file had already been removed or renamed when this process opened it: the shell
  /// opens standard input before the command begins.
  static bool hasReadFormerFileAt(const std::string& path);

  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;
  ~InputFile();

  /// Reads up to `size` bytes. Returns 0 only at the end.
  std::size_t read(char* block, std::size_t size);
  /// Goes back to the start, which is impossible for a pipe.
  void rewind();
  bool isSeekable() const { return isSeekable_; }
  /// Size of the file in bytes as it is on the disk, compressed or not; 0 for a pipe.
  std::uint64_t size() const { return size_; }

 private:
  struct Reader;

  std::string path_;
  std::unique_ptr<Reader> reader_;
  bool isSeekable_ = false;
  std::uint64_t size_ = 0;
};

}  // namespace tarn
