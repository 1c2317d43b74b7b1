#include "TextFile.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "CommandError.hpp"

namespace tarn {

using libtarn::util::TextPosition;

namespace {

constexpr std::size_t BLOCK_SIZE = std::size_t{1} << 16U;

}  // namespace

TextFile::TextFile(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "rb")) {
  if (!file_) throwFileError(path_, errno);
}

std::size_t TextFile::readBlock(char* block, std::size_t size) {
  const std::size_t count = std::fread(block, 1, size, file_.get());
  if (count == 0 && std::ferror(file_.get()) != 0) throwFileError(path_, errno);
  return count;
}

std::vector<char> TextFile::read() {
  struct stat status {};
  if (fstat(fileno(file_.get()), &status) != 0) throwFileError(path_, errno);
  isSeekable_ = S_ISREG(status.st_mode);

  // Room for the file as it is now and one byte more, which shows the end without growing.
  std::vector<char> text(isSeekable_ ? static_cast<std::size_t>(status.st_size) + 1 : BLOCK_SIZE);
  std::size_t size = 0;
  while (const std::size_t count = readBlock(text.data() + size, text.size() - size)) {
    size += count;
    if (size == text.size()) text.resize(std::max(BLOCK_SIZE, 2 * size));
  }
  text.resize(size);
  text.push_back('\0');
  if (!isSeekable_) copy_ = text;
  return text;
}

// A file is counted block by block, so that a fault in a large one takes no memory for it.
TextPosition TextFile::locate(std::size_t offset) {
  if (!isSeekable_) return libtarn::util::locate(copy_.data(), offset);
  std::rewind(file_.get());
  std::vector<char> block(BLOCK_SIZE + 1);
  TextPosition place{1, 1};
  while (offset > 0) {
    const std::size_t count = readBlock(block.data(), std::min(offset, BLOCK_SIZE));
    if (count == 0) break;
    block[count] = '\0';
    const TextPosition step = libtarn::util::locate(block.data(), count);
    place.column = step.line > 1 ? step.column : place.column + step.column - 1;
    place.line += step.line - 1;
    offset -= count;
  }
  return place;
}

}  // namespace tarn
