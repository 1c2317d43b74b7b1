#include "documentFile.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <memory>
#include <system_error>
#include <vector>

#include "CommandError.hpp"
#include "HostLog.hpp"

namespace tarn {

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

[[noreturn]] void throwFileError(const std::string& path, int error) {
  throw CommandError(Status::FileError,
                     path + ": error: " + std::generic_category().message(error));
}

// The whole file with a zero behind it.
std::vector<char> readFile(const std::string& path) {
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rb"));
  if (!file) throwFileError(path, errno);
  // Room for the file as it is now and one byte more, which shows the end without growing.
  std::error_code ignored;
  const std::uintmax_t fileSize = std::filesystem::file_size(path, ignored);
  constexpr std::size_t least_room = std::size_t{1} << 16U;
  std::vector<char> text(ignored ? least_room : static_cast<std::size_t>(fileSize) + 1);
  std::size_t size = 0;
  for (;;) {
    if (size == text.size()) text.resize(std::max(least_room, 2 * size));
    const std::size_t count = std::fread(text.data() + size, 1, text.size() - size, file.get());
    size += count;
    if (count == 0) break;
  }
  if (std::ferror(file.get()) != 0) throwFileError(path, errno);
  text.resize(size);
  text.push_back('\0');
  return text;
}

// The library takes a zero for the end of the text; in a file it is a fault, not an early end.
void refuseZeroBytes(const std::string& path, const std::vector<char>& text) {
  const auto zero = std::find(text.begin(), text.end() - 1, '\0');
  if (zero == text.end() - 1) return;
  const auto line = 1 + std::count(text.begin(), zero, '\n');
  const auto lineStart = std::find(std::make_reverse_iterator(zero), text.rend(), '\n').base();
  const auto column = 1 + (zero - lineStart);
  throw CommandError(Status::Malformed, path + ":" + std::to_string(line) + ":" +
                                            std::to_string(column) +
                                            ": error: unexpected zero byte");
}

}  // namespace

void loadDocument(const std::string& path, libtarn::model::LibTarnDocument& document) {
  std::vector<char> text = readFile(path);
  refuseZeroBytes(path, text);
  const int result = document.parse(std::move(text), false);
  if (result == 0) return;
  throw CommandError(result == 1 ? Status::Malformed : Status::RuleBroken,
                     path + ": error: " + HostLog::takeError());
}

void writeOutput(const std::string& text) {
  const std::size_t written = std::fwrite(text.data(), 1, text.size(), stdout);
  if (written != text.size() || std::fflush(stdout) != 0) throwFileError("standard output", errno);
}

}  // namespace tarn
