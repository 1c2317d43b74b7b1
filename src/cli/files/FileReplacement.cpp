// Commands that run at the same time must not lose a change. Each locks the file before it reads
// it, and unlocks it after the replacement. The lock is on the file itself, so nothing is left in
// the folder. A replacement puts another file at the path. So a command that has got the lock
// checks whether the path still leads to the locked file, and otherwise starts again with the new
// file.
//
// The lock is an open file description lock. flock(1) takes another kind. If both were the same, a
// command inside flock(1) would wait for itself for ever.

#include "files/FileReplacement.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <new>
#include <system_error>
#include <utility>

#include "CommandError.hpp"
#include "files/InputFile.hpp"
#include "files/accessRights.hpp"
#include "files/blockSizes.hpp"
#include "output/Progress.hpp"
#include "output/outputFile.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

constexpr long LOCK_STEP = 10'000'000;  // nanoseconds
constexpr int MOST_LOCK_STEPS = 6000;   // a minute
constexpr int LOCK_STEPS_WITHOUT_NOTE = 100;

// Returns false when somebody else has the lock. On a file system without locks it always succeeds.
bool lock(int file) {
  struct flock wholeFile {};
  wholeFile.l_type = F_WRLCK;
  wholeFile.l_whence = SEEK_SET;
  return ::fcntl(file, F_OFD_SETLK, &wholeFile) == 0 || (errno != EAGAIN && errno != EACCES);
}

void waitForLockStep() {
  const struct timespec time = {0, LOCK_STEP};
  ::nanosleep(&time, nullptr);
}

bool isSameTime(const struct timespec& a, const struct timespec& b) {
  return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
}

bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool isSameState(const struct stat& a, const struct stat& b) {
  return isSameFile(a, b) && a.st_size == b.st_size && isSameTime(a.st_mtim, b.st_mtim) &&
         isSameTime(a.st_ctim, b.st_ctim);
}

// When the file gets a second name, only the time of its status changes.
bool isSameContent(const struct stat& a, const struct stat& b) {
  return isSameFile(a, b) && a.st_size == b.st_size && isSameTime(a.st_mtim, b.st_mtim);
}

// A new file cannot be made in the folder, although the file itself may be writable.
[[noreturn]] void throwFolderError(const std::string& path, int error) {
  if (error != EACCES && error != EPERM && error != EROFS) throwFileError(path, error);
  throw CommandError(Status::FileError, path,
                     "its folder takes no new file: " + std::generic_category().message(error));
}

void requireNoInput(const std::filesystem::path& path) {
  std::error_code isNone;
  const std::string target = std::filesystem::weakly_canonical(path, isNone).string();
  if (isNone == std::errc::not_enough_memory) throw std::bad_alloc();
  if (!isNone && InputFile::hasReadFileAt(target)) {
    throw CommandError(Status::FileError, path,
                       "has been read, and the old file cannot be kept there");
  }
}

// A folder without read permission can be opened as a path only, and not be flushed.
Descriptor openFolder(const std::string& name) {
  Descriptor folder(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.isOpen() || errno != EACCES) return folder;
  return Descriptor(::open(name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace

FileReplacement::FileReplacement(std::string name, std::filesystem::path target,
                                 const std::string& suffix)
    : name_(std::move(name)),
      target_(std::move(target)),
      folderName_(target_.has_parent_path() ? target_.parent_path().string() : "."),
      baseName_(target_.filename().string()),
      keptName_(suffix.empty() ? "" : baseName_ + suffix),
      folder_(openFolder(folderName_)) {
  if (!folder_.isOpen() && errno == ENOENT) {
    throw CommandError(Status::FileError, name_, "its folder does not exist");
  }
  if (!folder_.isOpen()) throwFileError(name_, errno);
  if (!keptName_.empty()) requireKeepable();
  lockTarget();
}

std::filesystem::path FileReplacement::keptPath() const {
  return target_.parent_path() / keptName_;
}

// An earlier kept file is replaced. Anything else of that name is not what a user wants to lose.
void FileReplacement::requireKeepable() const {
  struct stat status {};
  if (::fstatat(folder_.get(), keptName_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    if (errno != ENOENT) throwFileError(keptPath(), errno);
  } else if (!S_ISREG(status.st_mode)) {
    throw CommandError(Status::FileError, keptPath(),
                       "is no regular file, and the old file cannot be kept there");
  }
}

void FileReplacement::lockTarget() {
  for (int step = 0; step < MOST_LOCK_STEPS; ++step) {
    if (!openTarget()) return;
    if (lock(file_.get())) {
      if (::fstat(file_.get(), &status_) != 0) throwFileError(name_, errno);
      if (isTarget(status_)) return requireFile();
    } else {
      if (step == LOCK_STEPS_WITHOUT_NOTE) reportNote(name_, "waiting for another program");
      waitForLockStep();
    }
  }
  throw CommandError(Status::FileError, name_, "another program is changing it");
}

// Returns false when the file does not exist. Refuses a file that is read-only for this user.
bool FileReplacement::openTarget() {
  constexpr int FLAGS = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  file_ = Descriptor(::openat(folder_.get(), baseName_.c_str(), O_RDWR | FLAGS));
  if (!file_.isOpen() && errno == EACCES) {
    file_ = Descriptor(::openat(folder_.get(), baseName_.c_str(), O_WRONLY | FLAGS));
  }
  if (!file_.isOpen() && errno != ENOENT) throwFileError(name_, errno);
  return file_.isOpen();
}

// The file may have been replaced by one that is not regular.
void FileReplacement::requireFile() const {
  if (!S_ISREG(status_.st_mode)) throwChangedError(name_);
}

bool FileReplacement::isTarget(const struct stat& status) const {
  struct stat current {};
  return ::fstatat(folder_.get(), baseName_.c_str(), &current, AT_SYMLINK_NOFOLLOW) == 0 &&
         isSameFile(current, status);
}

// Also follows the name that the user gave, which may lead to another file by now.
bool FileReplacement::isUnchanged() const {
  std::error_code isNone;
  const std::string path = std::filesystem::weakly_canonical(target_, isNone).string();
  if (isNone == std::errc::not_enough_memory) throw std::bad_alloc();
  if (isNone) return false;
  // A file that was created meanwhile is not locked. It is replaced unless the result was made of
  // it.
  if (!file_.isOpen()) return !InputFile::hasReadFileAt(path);
  if (InputFile::hasReadFormerFileAt(path)) return false;
  struct stat named {};
  return isTarget(status_) && ::stat(name_.c_str(), &named) == 0 && isSameState(named, status_);
}

void FileReplacement::write(const std::string& content) {
  const Progress progress("Writing", name_);
  if (file_.isOpen() && status_.st_nlink > 1) {
    reportNote(name_, "other names of the file keep what it held");
  }
  temporary_.emplace(folder_.get(), baseName_);
  Descriptor& temporary = temporary_->file();
  if (!temporary_->isThere()) throwFolderError(name_, errno);
  if (!writeAll(temporary.get(), name_, content)) throwFileError(name_, errno);
  finish(*temporary_);
}

// Rights and data are on the disk before the file gets its name.
void FileReplacement::finish(TemporaryFile& made) const {
  if (file_.isOpen()) {
    takeOverAccess(name_, file_.get(), status_, made.file().get());
  } else {
    giveUsualAccess(name_, folderName_, made.file().get());
  }
  if (::fsync(made.file().get()) != 0 || !made.file().close()) throwFileError(name_, errno);
}

void FileReplacement::commit() {
  if (!isUnchanged()) throwChangedError(name_);
  if (!keptName_.empty() && file_.isOpen()) {
    keep();
    if (!isUnchanged()) throwChangedError(name_);
  }
  if (!temporary_->moveTo(baseName_)) throwFileError(name_, errno);
  // Writes the new name to the disk. The data is already there, so a failure does not matter.
  ::fsync(folder_.get());
}

// Gives the old file a second name, so that the first one always leads to a file.
void FileReplacement::keep() {
  requireKeepable();
  requireNoInput(keptPath());
  TemporaryFile second(folder_.get(), baseName_, TemporaryFile::Kind::SecondName);
  if (!second.isThere()) return keepCopy();
  if (!second.isFile(status_)) throwChangedError(name_);
  if (!second.moveTo(keptName_)) throwFileError(keptPath(), errno);
  struct stat status {};
  if (::fstat(file_.get(), &status) != 0) throwFileError(name_, errno);
  if (isSameContent(status, status_)) status_ = status;
}

// For file systems without second names, and for files of others.
void FileReplacement::keepCopy() {
  TemporaryFile copy(folder_.get(), baseName_);
  if (!copy.isThere()) throwFolderError(keptPath(), errno);
  std::string block;
  for (off_t offset = 0; readBlock(block, offset); offset += static_cast<off_t>(block.size())) {
    if (!writeAll(copy.file().get(), keptPath(), block)) throwFileError(keptPath(), errno);
  }
  finish(copy);
  if (!isUnchanged()) throwChangedError(name_);
  if (!copy.moveTo(keptName_)) throwFileError(keptPath(), errno);
}

// Returns false at the end of the file.
bool FileReplacement::readBlock(std::string& block, off_t offset) const {
  block.resize(READ_BLOCK);
  const ssize_t count = ::pread(file_.get(), block.data(), block.size(), offset);
  if (count < 0) throwFileError(name_, errno);
  block.resize(static_cast<std::size_t>(count));
  return count > 0;
}

bool FileReplacement::holdsGzip() const {
  constexpr std::array<char, 2> MAGIC = {'\x1f', '\x8b'};
  std::array<char, 2> start{};
  return ::pread(file_.get(), start.data(), start.size(), 0) == 2 && start == MAGIC;
}

}  // namespace tarn
