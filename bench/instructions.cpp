// The phases whose instructions instructions.py counts under callgrind. Each phase is one function;
// its count includes everything that it calls.
//
// Usage: instructions DOCUMENT load|print|merge|plan|apply|diff|diff_all

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

[[gnu::noinline]] bool measured_plan(LibTarnDocument& source, LibTarnDocument& delta) {
  return libtarn::editor::TarnPlan(source, delta).getConflicts().empty();
}

[[gnu::noinline]] bool measured_apply(libtarn::editor::TarnPlan& plan) { return plan.apply(); }

// A document with one value in a hundred changed, and one with every value changed.

[[gnu::noinline]] bool measured_diff(const LibTarnDocument& older, const LibTarnDocument& newer) {
  return !libtarn::editor::TarnDiff(older, newer).getDifferences().empty();
}

[[gnu::noinline]] bool measured_diff_all(const LibTarnDocument& older,
                                         const LibTarnDocument& newer) {
  return !libtarn::editor::TarnDiff(older, newer).getDifferences().empty();
}

}  // extern "C"

namespace {

// `text` with another last character in every `step`-th value.
std::vector<char> withOtherValues(std::vector<char> text, std::size_t step) {
  std::size_t number = 0;
  for (std::size_t i = 1; i + 3 < text.size(); ++i) {
    const bool isValue = text[i] != '>' && std::memcmp(&text[i + 1], "</p", 3) == 0;
    if (isValue && number++ % step == 0) text[i] = text[i] == '7' ? '8' : '7';
  }
  return text;
}

bool run(const std::vector<char>& text, const char* phase) {
  LibTarnDocument document;
  std::vector<char> copy = text;
  if (!measured_load(document, copy)) return false;
  if (std::strcmp(phase, "load") == 0) return true;
  if (std::strcmp(phase, "print") == 0) return measured_print(document);
  LibTarnDocument delta;
  const bool isDiff = std::strncmp(phase, "diff", 4) == 0;
  const bool isOfAll = std::strcmp(phase, "diff_all") == 0;
  if (delta.parse(isDiff ? withOtherValues(text, isOfAll ? 1 : 100) : text, false) != 0)
    return false;
  if (isDiff) return (isOfAll ? measured_diff_all : measured_diff)(document, delta);
  for (LibTarnManagedObject* object : delta.getLibTarnCmData()->getLibTarnManagedObjects()) {
    object->setOperation(LibTarnManagedObject::Operation::UPDATE);
  }
  if (std::strcmp(phase, "plan") == 0) return measured_plan(document, delta);
  if (std::strcmp(phase, "apply") == 0) {
    libtarn::editor::TarnPlan plan(document, delta);
    return measured_apply(plan);
  }
  return measured_merge(document, delta);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr,
                 "usage: instructions DOCUMENT load|print|merge|plan|apply|diff|diff_all\n");
    return 64;
  }
  std::ifstream file(argv[1], std::ios::binary);
  std::vector<char> text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  text.push_back('\0');
  return run(text, argv[2]) ? 0 : 1;
}
