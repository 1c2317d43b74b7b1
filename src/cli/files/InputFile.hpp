#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tarn {

/// Throws CommandError when more than one of `names`, the inputs of a command, is standard input,
/// which can be read once only. Called before anything is read.
void requireOneStandardInput(const std::vector<std::string>& names);

/// Reads a file, or standard input for "-", from its start, and decompresses it when it is a gzip
/// file. All functions throw CommandError when it cannot be read; so does a second object for
/// standard input.
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
  /// How many of these bytes have been read so far.
  std::uint64_t position() const;

 private:
  struct Reader;

  std::string path_;
  std::unique_ptr<Reader> reader_;
  bool isSeekable_ = false;
  std::uint64_t size_ = 0;
};

/// Reads the file at `path`, or standard input for "-", as a whole.
std::string readFile(const std::string& path);

}  // namespace tarn
