// The phases whose instructions instructions.py counts under callgrind. Each phase is one function;
// its count includes everything that it calls.
//
// Usage: instructions DOCUMENT load|print|merge

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "libtarn/libtarn.hpp"

using namespace libtarn::model;

void libtarn::util::Logger::print(Level level, const char* /*location*/, const char* /*function*/,
                                  const char* message) {
  if (level == Level::ERROR) std::fprintf(stderr, "%s\n", message);
}

// With C linkage, so that callgrind gets the names as they are here.
extern "C" {

[[gnu::noinline]] bool measured_load(LibTarnDocument& document, std::vector<char>& text) {
  return document.parse(std::move(text), true) == 0;
}

[[gnu::noinline]] bool measured_print(LibTarnDocument& document) {
  std::string printed;
  libtarn::util::dumpTarnDocument(document, printed);
  return !printed.empty();
}

[[gnu::noinline]] bool measured_merge(LibTarnDocument& source, LibTarnDocument& delta) {
  return libtarn::editor::TarnMerge(source).mergeDocument(delta);
}

}  // extern "C"

namespace {

bool run(const std::vector<char>& text, const char* phase) {
  LibTarnDocument document;
  std::vector<char> copy = text;
  if (!measured_load(document, copy)) return false;
  if (std::strcmp(phase, "load") == 0) return true;
  if (std::strcmp(phase, "print") == 0) return measured_print(document);
  LibTarnDocument delta;
  if (delta.parse(text, false) != 0) return false;
  for (LibTarnManagedObject* object : delta.getLibTarnCmData()->getLibTarnManagedObjects()) {
    object->setOperation(LibTarnManagedObject::Operation::UPDATE);
  }
  return measured_merge(document, delta);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: instructions DOCUMENT load|print|merge\n");
    return 64;
  }
  std::ifstream file(argv[1], std::ios::binary);
  std::vector<char> text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  text.push_back('\0');
  return run(text, argv[2]) ? 0 : 1;
}
