#include "TextFile.hpp"

#include <algorithm>

#include "terminal.hpp"

namespace tarn {

using libtarn::util::TextPosition;

namespace {

constexpr std::size_t BLOCK_SIZE = std::size_t{1} << 16U;
// What is read before the progress is looked at again.
constexpr std::size_t STEP_SIZE = std::size_t{1} << 24U;

}  // namespace

std::vector<char> TextFile::read() {
  // Room for the file as it is now and one byte more, which shows the end without growing.
  const auto expected = static_cast<std::size_t>(file_.size());
  std::vector<char> text(std::max(BLOCK_SIZE, expected + 1));
  Progress progress("Reading", path_, file_.size());
  std::size_t size = 0;
  while (const std::size_t count =
             file_.read(text.data() + size, std::min(STEP_SIZE, text.size() - size))) {
    size += count;
    progress.advance(count);
    if (size == text.size()) text.resize(2 * size);
  }
  text.resize(size);
  text.push_back('\0');
  if (!file_.isSeekable()) copy_ = text;
  return text;
}

// A file is counted block by block, so that a fault in a large one takes no memory for it.
TextPosition TextFile::locate(std::size_t offset) {
  if (!file_.isSeekable()) return libtarn::util::locate(copy_.data(), offset);
  file_.rewind();
  std::vector<char> block(BLOCK_SIZE + 1);
  TextPosition place{1, 1};
  while (offset > 0) {
    const std::size_t count = file_.read(block.data(), std::min(offset, BLOCK_SIZE));
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
