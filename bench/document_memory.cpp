// Memory of a loaded document, with every index used, for each byte of its text. Depends on the
// size of pointers, not on the machine otherwise.
//
// Usage: document_memory DOCUMENT [LIMIT]     fails when the result is more than LIMIT

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

#include "walk_indexes.hpp"

void libtarn::util::Logger::print(Level level, const char* /*location*/, const char* /*function*/,
                                  const char* message) {
  if (level == Level::ERROR) std::fprintf(stderr, "%s\n", message);
}

int main(int argc, char** argv) {
  if (argc < 2 || argc > 3) {
    std::fprintf(stderr, "usage: document_memory DOCUMENT [LIMIT]\n");
    return 64;
  }
  std::ifstream file(argv[1], std::ios::binary);
  std::vector<char> text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  const auto size = static_cast<double>(text.size());
  text.push_back('\0');
  text.shrink_to_fit();
  libtarn::model::LibTarnDocument document;
  if (document.parse(std::move(text), true) != 0) return 1;
  const std::size_t entries = bench::walkIndexes(document);
  const double each = static_cast<double>(document.getMemorySize()) / size;
  std::printf("%s: %.0f bytes, %zu index entries, %.2f bytes of memory for each byte of text\n",
              argv[1], size, entries, each);
  return argc == 3 && each > std::atof(argv[2]) ? 1 : 0;
}
