#include "files/TextFile.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "CommandError.hpp"
#include "files/blockSizes.hpp"
#include "output/terminal.hpp"

namespace tarn {

using libtarn::util::TextPosition;

namespace {

constexpr std::size_t LARGE_PAGE = std::size_t{1} << 21U;

// Avoids most page faults of a large text. Only a hint, so its result does not matter.
void preferLargePages(std::vector<char>& text) {
  const auto begin = reinterpret_cast<std::uintptr_t>(text.data());
  const std::uintptr_t aligned = (begin + LARGE_PAGE - 1) / LARGE_PAGE * LARGE_PAGE;
  const std::uintptr_t end = begin + text.capacity();
  if (aligned + LARGE_PAGE > end) return;
  ::madvise(text.data() + (aligned - begin), end - aligned, MADV_HUGEPAGE);
}

std::size_t offsetIn(const std::vector<char>& block, const void* position) {
  return static_cast<std::size_t>(static_cast<const char*>(position) - block.data());
}

}  // namespace

// Reads through a block that stays in the cache: the large memory is written once, and never zeroed
// before.
std::vector<char> TextFile::read() {
  if (!copy_.empty()) return copy_;
  if (std::exchange(isRead_, true)) file_.rewind();
  std::vector<char> block(READ_BLOCK);
  std::vector<char> text;
  text.reserve(static_cast<std::size_t>(file_.size()) + 1);
  preferLargePages(text);
  Progress progress("Reading", path_, file_.size());
  while (const std::size_t count = file_.read(block.data(), block.size())) {
    const void* const nul = std::memchr(block.data(), '\0', count);
    text.insert(text.end(), block.data(), block.data() + count);
    if (nul) refuseNul(text, count - offsetIn(block, nul));
    progress.advance(count);
  }
  text.push_back('\0');
  if (!file_.isSeekable()) copy_ = text;
  return text;
}

// For the library a NUL ends the text. In a file it is a fault, not an early end.
void TextFile::refuseNul(const std::vector<char>& text, std::size_t distanceFromEnd) const {
  throw CommandError(Status::Malformed, path_,
                     libtarn::util::locate(text.data(), text.size() - distanceFromEnd),
                     "unexpected NUL byte");
}

// Counts block by block, so that a fault in a large file needs no memory for the whole text.
TextPosition TextFile::locate(std::size_t offset) {
  if (!file_.isSeekable()) return libtarn::util::locate(copy_.data(), offset);
  file_.rewind();
  std::vector<char> block(READ_BLOCK + 1);
  TextPosition place{1, 1};
  while (offset > 0) {
    const std::size_t count = file_.read(block.data(), std::min(offset, READ_BLOCK));
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
