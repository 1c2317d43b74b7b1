#include "files/Destination.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <system_error>

#include "CommandError.hpp"
#include "files/gzip.hpp"
#include "output/outputFile.hpp"

namespace tarn {

namespace fs = std::filesystem;

namespace {

constexpr const char* STANDARD_OUTPUT = "-";
// The kernel follows no more.
constexpr int MOST_LINKS = 40;

/// The file that a path leads to when links at its end are followed.
struct Followed {
  fs::path path;
  std::optional<int> descriptor;  // an open file of this process
  bool isOpenFile = false;        // of this process or another one
};

bool isNumber(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// True if the folder, a path without links, holds the open files of a process.
bool isFolderOfOpenFiles(const fs::path& folder) {
  const std::string text = folder.string();
  return text.compare(0, 6, "/proc/") == 0 && folder.filename() == "fd";
}

bool isOfThisProcess(const fs::path& folder) {
  const std::string own = "/proc/" + std::to_string(::getpid()) + "/";
  return folder.string().compare(0, own.size(), own) == 0;
}

// /dev/stdout, /dev/fd/3 and the like are links into /proc. Such a number stands for an open file,
// which may have any path: a pipe, or a file that a shell has opened for the command.
void recognizeOpenFile(Followed& target) {
  const std::string number = target.path.filename().string();
  if (!isNumber(number)) return;
  std::error_code failed;
  const fs::path folder = fs::canonical(target.path.parent_path(), failed);
  if (failed || !isFolderOfOpenFiles(folder)) return;
  target.isOpenFile = true;
  int descriptor = -1;
  const auto parsed = std::from_chars(number.data(), number.data() + number.size(), descriptor);
  if (isOfThisProcess(folder) && parsed.ec == std::errc()) target.descriptor = descriptor;
}

// When a link cannot be followed, opening the target reports the fault.
Followed follow(const std::string& path) {
  Followed target{path, std::nullopt};
  for (int i = 0; i < MOST_LINKS; ++i) {
    recognizeOpenFile(target);
    std::error_code noLink;
    const fs::path next = fs::read_symlink(target.path, noLink);
    if (target.isOpenFile || noLink) break;
    target.path = target.path.parent_path() / next;
  }
  return target;
}

const char* kindOf(mode_t mode) {
  if (S_ISFIFO(mode)) return "a FIFO";
  return S_ISSOCK(mode) ? "a socket" : "a device";
}

[[noreturn]] void refuseInPlace(const std::string& name, const std::string& what) {
  throw CommandError(Status::FileError, name, "--in-place cannot replace " + what);
}

}  // namespace

Destination::Destination(const std::string& source, const Target& target)
    : name_(target.inPlace ? source : target.output), isInPlace_(target.inPlace) {
  if (name_.empty()) throwNoName();
  if (target.suffix.find('/') != std::string::npos) {
    throwUsageError("the SUFFIX of --in-place holds a '/'");
  }
  if (name_ == STANDARD_OUTPUT) {
    if (target.inPlace) throwUsageError("--in-place needs a file, and - is standard input");
    descriptor_ = STDOUT_FILENO;
    return;
  }
  const Followed followed = follow(name_);
  if (followed.isOpenFile && target.inPlace) refuseInPlace(name_, "an open file");
  descriptor_ = followed.descriptor;
  isOpenFile_ = followed.isOpenFile;
  // Checked now, since a file that is opened later may get the same number.
  if (descriptor_ && ::fcntl(*descriptor_, F_GETFL) < 0) throwFileError(name_, errno);
  if (followed.isOpenFile) return;
  struct stat status {};
  const bool exists = ::stat(followed.path.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) throwFileError(name_, errno);
  if (!exists || S_ISREG(status.st_mode)) {
    replacement_.emplace(name_, followed.path, target.suffix);
  } else if (S_ISDIR(status.st_mode)) {
    throwFileError(name_, EISDIR);
  } else if (target.inPlace) {
    refuseInPlace(name_, kindOf(status.st_mode));
  }
}

bool Destination::isStandardOutput() const { return descriptor_ == STDOUT_FILENO; }

void Destination::write(const std::string& text) {
  if (isCompressed()) {
    writeContent(gzip(name_, text));
  } else {
    writeContent(text);
  }
  isWritten_ = !replacement_;
}

// A file stays what it is, whatever its name.
bool Destination::isCompressed() const {
  return isInPlace_ ? replacement_ && replacement_->holdsGzip() : isGzipName(name_);
}

void Destination::commit() {
  if (replacement_) replacement_->commit();
}

void Destination::writeContent(const std::string& content) {
  if (isStandardOutput()) return writeOutput(content);
  if (replacement_) return replacement_->write(content);
  if (descriptor_) {
    if (!writeAll(*descriptor_, name_, content)) throwFileError(name_, errno);
    return;
  }
  const int ofFile = isOpenFile_ ? O_TRUNC : 0;
  Descriptor opened(::open(name_.c_str(), O_WRONLY | ofFile | O_CLOEXEC));
  struct stat status {};
  if (!opened.isOpen() || ::fstat(opened.get(), &status) != 0) throwFileError(name_, errno);
  // If a file has replaced the FIFO since, it would have to be replaced, not written to.
  if (S_ISREG(status.st_mode) && !isOpenFile_) throwChangedError(name_);
  if (!writeAll(opened.get(), name_, content) || !opened.close()) throwFileError(name_, errno);
}

}  // namespace tarn
