// Loads a document with validation, and reports what is wrong and where.
//
// Usage: load_and_check DOCUMENT

#include <libtarn/libtarn.hpp>

#include "files.hpp"

using libtarn::model::Diagnostic;
using libtarn::model::LibTarnDocument;

int main(int argc, char** argv) {
  if (argc != 2) return 64;
  std::vector<char> text = readText(argv[1]);
  if (text.empty()) return 5;

  // The parse writes into the text that it takes over, so locate() needs a copy.
  const std::vector<char> pristine = text;
  LibTarnDocument document;
  const int code = document.parse(std::move(text), true);
  const Diagnostic& diagnostic = document.getDiagnostic();
  if (code == 0) {
    std::cout << argv[1] << ": " << document.getLibTarnCmData()->getManagedObjectNumber()
              << " managed objects\n";
  } else if (code == 1) {
    const auto place = libtarn::util::locate(pristine.data(), diagnostic.offset);
    std::cout << argv[1] << ':' << place.line << ':' << place.column << ": " << diagnostic.message
              << '\n';
  } else {
    std::cout << argv[1] << ": " << diagnostic.message << '\n';
  }
  return code;
}
