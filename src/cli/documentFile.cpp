#include "documentFile.hpp"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

#include "CommandError.hpp"
#include "HostLog.hpp"
#include "TextFile.hpp"

namespace tarn {

using libtarn::model::Diagnostic;
using libtarn::model::LibTarnDocument;

namespace {

[[noreturn]] void throwMalformed(const std::string& path, libtarn::util::TextPosition place,
                                 const std::string& message) {
  throw CommandError(Status::Malformed, errorLine(path + ":" + std::to_string(place.line) + ":" +
                                                      std::to_string(place.column),
                                                  message));
}

// The library takes a zero for the end of the text; in a file it is a fault, not an early end.
void refuseZeroBytes(const std::string& path, const std::vector<char>& text) {
  const std::size_t size = text.size() - 1;
  const void* const zero = std::memchr(text.data(), '\0', size);
  if (!zero) return;
  const auto offset = static_cast<std::size_t>(static_cast<const char*>(zero) - text.data());
  throwMalformed(path, libtarn::util::locate(text.data(), offset), "unexpected zero byte");
}

void load(const std::string& path, LibTarnDocument& document, bool validate) {
  TextFile file(path);
  std::vector<char> text = file.read();
  refuseZeroBytes(path, text);
  if (document.parse(std::move(text), validate) == 0) return;
  HostLog::takeError();  // what the diagnostic says, too
  const Diagnostic& diagnostic = document.getDiagnostic();
  if (diagnostic.code == 1) {
    throwMalformed(path, file.locate(diagnostic.offset), diagnostic.message);
  }
  throw CommandError(Status::RuleBroken, errorLine(path, diagnostic.message));
}

}  // namespace

void loadDocument(const std::string& path, LibTarnDocument& document) {
  load(path, document, false);
}

void loadValidDocument(const std::string& path, LibTarnDocument& document) {
  load(path, document, true);
}

void writeOutput(const std::string& text) {
  const std::size_t written = std::fwrite(text.data(), 1, text.size(), stdout);
  if (written != text.size() || std::fflush(stdout) != 0) throwFileError("standard output", errno);
}

}  // namespace tarn
