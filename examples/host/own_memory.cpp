// Keeps documents within the host's memory budget, and reports what a document costs.
//
// Usage: own_memory DOCUMENT
//
// A document around a TarnDomDocument that the host made takes its blocks from the heap; any other
// document maps memory. So a host that counts its heap counts such documents, too.

#include <cstddef>
#include <cstdlib>
#include <libtarn/libtarn.hpp>
#include <limits>
#include <new>

#include "files.hpp"

using libtarn::model::LibTarnDocument;
using libtarn::model::TarnDomDocument;

namespace {

// Bytes that may still be allocated. A host with several threads makes it atomic.
std::size_t budget = std::numeric_limits<std::size_t>::max();

// Each allocation has its size in front, aligned as malloc() aligns.
constexpr std::size_t PREFIX = alignof(std::max_align_t);

bool load(const char* path, std::size_t bytes) {
  std::vector<char> text = readText(path);
  if (text.empty()) return false;
  const std::size_t textSize = text.size();
  const std::size_t before = budget;
  budget = bytes;
  try {
    LibTarnDocument document(new TarnDomDocument(nullptr, nullptr));
    if (document.parse(std::move(text), true) != 0) return false;
    std::cout << bytes / 1024 << " KiB are enough; the document takes "
              << (document.getMemorySize() < 12 * textSize ? "less" : "more")
              << " than 12 times its text\n";
  } catch (const std::bad_alloc&) {
    // The memory of the document has been freed.
    std::cout << bytes / 1024 << " KiB are too few\n";
  }
  budget = before;
  return true;
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = size <= budget ? std::malloc(PREFIX + size) : nullptr;
  if (!memory) throw std::bad_alloc();
  budget -= size;
  *static_cast<std::size_t*>(memory) = size;
  return static_cast<char*>(memory) + PREFIX;
}

void operator delete(void* memory) noexcept {
  if (!memory) return;
  char* const block = static_cast<char*>(memory) - PREFIX;
  budget += *reinterpret_cast<std::size_t*>(block);
  std::free(block);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }
void* operator new[](std::size_t size) { return operator new(size); }
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { operator delete(memory); }

int main(int argc, char** argv) {
  if (argc != 2) return 64;
  const bool loaded =
      load(argv[1], std::size_t{64} * 1024) && load(argv[1], std::size_t{4096} * 1024);
  return loaded ? 0 : 5;
}
