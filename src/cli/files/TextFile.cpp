#include "files/TextFile.hpp"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "CommandError.hpp"
#include "files/blockSizes.hpp"
#include "libtarn/util/XmlCheck.hpp"
#include "output/Progress.hpp"

namespace tarn {

using libtarn::util::TextPosition;
using libtarn::util::XmlFault;
using libtarn::util::XmlFaults;

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

// Standard input can be opened only once.
bool TextFile::isReopenable() const { return file_.isSeekable() && path_ != "-"; }

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
    progress.reach(file_.position());
  }
  text.push_back('\0');
  if (!file_.isSeekable()) copy_ = text;
  return text;
}

// For the library a NUL ends the text. In a file it is a fault, not an early end.
void TextFile::refuseNul(const std::vector<char>& text, std::size_t distanceFromEnd) const {
  const XmlFaults faults = libtarn::util::checkXml({text.data(), text.size()}, 1);
  if (!faults.list.empty() && faults.list.front().kind == XmlFault::Kind::Encoding) {
    throw CommandError(Status::Malformed, path_, {1, 1}, faults.list.front().message);
  }
  throw CommandError(Status::Malformed, path_,
                     libtarn::util::locate(text.data(), text.size() - distanceFromEnd),
                     "unexpected NUL byte");
}

TextPosition TextFile::locate(std::size_t offset) {
  return locate(std::vector<std::size_t>{offset}).front();
}

namespace {

/// Follows a text from its start and finds the places of ascending offsets.
class PlaceFinder {
 public:
  explicit PlaceFinder(const std::vector<std::size_t>& offsets) : offsets_(offsets) {
    places_.reserve(offsets.size());
  }

  bool isDone() const { return places_.size() == offsets_.size(); }

  /// The next `size` bytes of the text.
  void read(const char* text, std::size_t size) {
    const std::size_t end = offset_ + size;
    while (!isDone() && offsets_[places_.size()] <= end) {
      const std::size_t step = offsets_[places_.size()] - offset_;
      advance(text, step);
      text += step;
      places_.push_back(place_);
    }
    advance(text, end - offset_);
  }

  /// Offsets after the end of the text are at its end.
  std::vector<TextPosition> take() {
    places_.resize(offsets_.size(), place_);
    return std::move(places_);
  }

 private:
  void advance(const char* text, std::size_t size) {
    const TextPosition step = libtarn::util::locate(text, size);
    place_.column = step.line > 1 ? step.column : place_.column + step.column - 1;
    place_.line += step.line - 1;
    offset_ += size;
  }

  const std::vector<std::size_t>& offsets_;
  std::vector<TextPosition> places_;
  std::size_t offset_ = 0;
  TextPosition place_{1, 1};
};

}  // namespace

// Reads block by block, so that a fault in a large file needs no memory for the whole text.
std::vector<TextPosition> TextFile::locate(const std::vector<std::size_t>& offsets) {
  PlaceFinder finder(offsets);
  if (!file_.isSeekable()) {
    if (!copy_.empty()) finder.read(copy_.data(), copy_.size() - 1);
    return finder.take();
  }
  file_.rewind();
  std::vector<char> block(READ_BLOCK + 1);
  while (!finder.isDone()) {
    const std::size_t count = file_.read(block.data(), READ_BLOCK);
    if (count == 0) break;
    block[count] = '\0';
    finder.read(block.data(), count);
  }
  return finder.take();
}

}  // namespace tarn
