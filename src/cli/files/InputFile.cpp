// Two readers behind one interface: one on zlib, which also reads files that are not compressed,
// and one for builds without zlib.

#include "files/InputFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <new>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "CommandError.hpp"
#include "output/outputFile.hpp"

#ifdef TARN_WITH_ZLIB
#include <zlib.h>

#include "files/blockSizes.hpp"
#endif

namespace tarn {

namespace {

constexpr const char* STANDARD_INPUT = "-";
constexpr std::string_view FORMER_MARK = " (deleted)";

std::mutex pathsMutex;
std::set<std::string> readPaths;
std::set<std::string> formerPaths;  // those of them that were no longer there

// The kernel appends this mark to the path of an open file that has been removed.
bool isMarked(const std::string& path) {
  return path.size() > FORMER_MARK.size() &&
         path.compare(path.size() - FORMER_MARK.size(), FORMER_MARK.size(), FORMER_MARK) == 0;
}

// The name of a file may end in the mark, too.
bool isAt(const std::string& path, const struct stat& status) {
  struct stat there {};
  return ::stat(path.c_str(), &there) == 0 && there.st_dev == status.st_dev &&
         there.st_ino == status.st_ino;
}

void rememberPath(int descriptor, const struct stat& status) {
  std::error_code ignored;
  std::string path =
      std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), ignored);
  const std::lock_guard<std::mutex> lock(pathsMutex);
  if (isMarked(path) && !isAt(path, status)) {
    path.resize(path.size() - FORMER_MARK.size());
    formerPaths.insert(path);
  }
  readPaths.insert(path);
}

[[noreturn]] void throwStandardInputTwice() {
  throwUsageError("standard input is named more than once, but can be read once only");
}

// Also /dev/stdin and the like, except when standard input is a file, which can be opened again.
bool isStandardInput(const std::string& name) {
  struct stat named {};
  struct stat input {};
  return name == STANDARD_INPUT ||
         (::stat(name.c_str(), &named) == 0 && ::fstat(STDIN_FILENO, &input) == 0 &&
          !S_ISREG(input.st_mode) && named.st_dev == input.st_dev && named.st_ino == input.st_ino);
}

int openInput(const std::string& path) {
  static std::atomic<bool> isStandardInputOpened{false};
  if (path.empty()) throwNoName();
  if (path != STANDARD_INPUT) return ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (isStandardInputOpened.exchange(true)) throwStandardInputTwice();
  return ::dup(STDIN_FILENO);
}

#ifdef TARN_WITH_ZLIB

[[noreturn]] void throwReadError(const std::string& path, gzFile file) {
  int code = Z_OK;
  gzerror(file, &code);
  if (code == Z_ERRNO) throwFileError(path, errno);
  if (code == Z_MEM_ERROR) throw std::bad_alloc();
  throw CommandError(Status::FileError, path, "compressed data is damaged or cut off");
}

#else

// The first bytes of a gzip file.
constexpr const char* MAGIC = "\x1f\x8b";

#endif

}  // namespace

void requireOneStandardInput(const std::vector<std::string>& names) {
  if (std::count_if(names.begin(), names.end(), isStandardInput) > 1) throwStandardInputTwice();
}

#ifdef TARN_WITH_ZLIB

struct InputFile::Reader {
  explicit Reader(int descriptor) : file(gzdopen(descriptor, "rb")) {
    if (!file) throw std::bad_alloc();
    gzbuffer(file, GZIP_BLOCK);
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { gzclose(file); }

  gzFile file;
};

std::size_t InputFile::read(char* block, std::size_t size) {
  const int count =
      gzread(reader_->file, block, static_cast<unsigned>(std::min<std::size_t>(size, INT_MAX)));
  if (count < 0) throwReadError(path_, reader_->file);
  if (count > 0) return static_cast<std::size_t>(count);
  // Only this call reports a truncated stream.
  int code = Z_OK;
  gzerror(reader_->file, &code);
  if (code != Z_OK) throwReadError(path_, reader_->file);
  return 0;
}

std::uint64_t InputFile::position() const {
  return static_cast<std::uint64_t>(std::max<z_off_t>(gzoffset(reader_->file), 0));
}

void InputFile::rewind() {
  if (gzrewind(reader_->file) != 0) throwReadError(path_, reader_->file);
}

#else

struct InputFile::Reader {
  explicit Reader(int opened) : descriptor(opened) {}
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { ::close(descriptor); }

  int descriptor;
  bool isAtStart = true;
  std::uint64_t position = 0;
};

std::size_t InputFile::read(char* block, std::size_t size) {
  ssize_t count = -1;
  do {
    count = ::read(reader_->descriptor, block, std::min<std::size_t>(size, INT_MAX));
    if (count < 0 && errno != EINTR) throwFileError(path_, errno);
  } while (count < 0);
  if (std::exchange(reader_->isAtStart, false) && count >= 2 && std::memcmp(block, MAGIC, 2) == 0) {
    throw CommandError(Status::FileError, path_, "this build cannot read compressed files");
  }
  reader_->position += static_cast<std::size_t>(count);
  return static_cast<std::size_t>(count);
}

std::uint64_t InputFile::position() const { return reader_->position; }

void InputFile::rewind() {
  if (::lseek(reader_->descriptor, 0, SEEK_SET) != 0) throwFileError(path_, errno);
  reader_->position = 0;
}

#endif

InputFile::InputFile(const std::string& path) : path_(path) {
  const int descriptor = openInput(path);
  if (descriptor < 0) throwFileError(path_, errno);
  try {
    reader_ = std::make_unique<Reader>(descriptor);
  } catch (const std::bad_alloc&) {
    ::close(descriptor);
    throw;
  }
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) throwFileError(path_, errno);
  if (path == STANDARD_INPUT && isReserved(descriptor)) {
    throw CommandError(Status::FileError, "standard input", "is closed");
  }
  if (S_ISDIR(status.st_mode)) throwFileError(path_, EISDIR);
  if (S_ISREG(status.st_mode)) rememberPath(descriptor, status);
  // The file offset of standard input may be anywhere.
  isSeekable_ = S_ISREG(status.st_mode) && path != STANDARD_INPUT;
  if (isSeekable_) size_ = static_cast<std::uint64_t>(status.st_size);
}

InputFile::~InputFile() = default;

bool InputFile::hasReadFileAt(const std::string& path) {
  const std::lock_guard<std::mutex> lock(pathsMutex);
  return readPaths.count(path) == 1;
}

bool InputFile::hasReadFormerFileAt(const std::string& path) {
  const std::lock_guard<std::mutex> lock(pathsMutex);
  return formerPaths.count(path) == 1;
}

std::string readFile(const std::string& path) {
  constexpr std::size_t BLOCK_SIZE = std::size_t{1} << 16U;
  InputFile file(path);
  std::string content;
  std::vector<char> block(BLOCK_SIZE);
  while (const std::size_t size = file.read(block.data(), block.size())) {
    content.append(block.data(), size);
  }
  return content;
}

}  // namespace tarn
