#include "replaceFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include "CommandError.hpp"

namespace tarn {

namespace fs = std::filesystem;

namespace {

// As many as the kernel follows.
constexpr int MOST_LINKS = 40;

/// An open file that is closed at the end.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }

  int get() const { return number_; }
  bool isOpen() const { return number_ >= 0; }
  // Some file systems tell only here that the data could not be kept.
  bool close() { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

/// Removes a file at the end, unless it was released.
class FileRemover {
 public:
  explicit FileRemover(std::string path) : path_(std::move(path)) {}
  FileRemover(const FileRemover&) = delete;
  FileRemover& operator=(const FileRemover&) = delete;
  ~FileRemover() {
    if (!path_.empty()) ::unlink(path_.c_str());
  }

  void release() { path_.clear(); }

 private:
  std::string path_;
};

bool writeAll(int file, const std::string& text) {
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count = ::write(file, text.data() + done, text.size() - done);
    if (count < 0 && errno != EINTR) return false;
    if (count > 0) done += static_cast<std::size_t>(count);
  }
  return true;
}

// What cannot be followed is told when the target is opened.
fs::path followLinks(fs::path path) {
  for (int i = 0; i < MOST_LINKS; ++i) {
    std::error_code noLink;
    const fs::path next = fs::read_symlink(path, noLink);
    if (noLink) break;
    path = path.parent_path() / next;
  }
  return path;
}

void writeInPlace(const std::string& path, const std::string& text) {
  Descriptor file(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (!file.isOpen() || !writeAll(file.get(), text) || !file.close()) throwFileError(path, errno);
}

// The mode of a file that a program makes, by the user's mask.
mode_t modeOfNewFile() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666U & ~mask;
}

// Owner and group only where the user may give them; then the mode, which a change of owner cuts.
bool takeOver(int file, const struct stat* status) {
  if (!status) return ::fchmod(file, modeOfNewFile()) == 0;
  if (::fchown(file, status->st_uid, status->st_gid) != 0 && errno != EPERM) return false;
  return ::fchmod(file, status->st_mode & 07777U) == 0;
}

// So that the new name itself is on the disk. The data is, whatever this comes to.
void flushFolder(const fs::path& folder) {
  const Descriptor descriptor(
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.isOpen()) ::fsync(descriptor.get());
}

}  // namespace

void replaceFile(const std::string& path, const std::string& text) {
  const fs::path target = followLinks(path);
  struct stat status {};
  const bool exists = ::stat(target.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) throwFileError(path, errno);
  if (exists && !S_ISREG(status.st_mode)) return writeInPlace(path, text);
  // A file that its owner made read-only is not to be replaced either.
  if (exists && ::access(target.c_str(), W_OK) != 0) throwFileError(path, errno);

  std::string temporary = target.string() + ".XXXXXX";
  Descriptor file(::mkstemp(temporary.data()));
  if (!file.isOpen()) throwFileError(path, errno);
  FileRemover remover(temporary);
  if (!writeAll(file.get(), text) || !takeOver(file.get(), exists ? &status : nullptr) ||
      ::fsync(file.get()) != 0 || !file.close() ||
      std::rename(temporary.c_str(), target.c_str()) != 0) {
    throwFileError(path, errno);
  }
  remover.release();
  flushFolder(target.parent_path());
}

}  // namespace tarn
