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

#include <cerrno>
#include <ctime>
#include <new>
#include <system_error>
#include <utility>

#include "CommandError.hpp"
#include "files/InputFile.hpp"
#include "files/accessRights.hpp"
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

// A folder without read permission can be opened as a path only, and not be flushed.
Descriptor openFolder(const std::string& name) {
  Descriptor folder(::open(name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.isOpen() || errno != EACCES) return folder;
  return Descriptor(::open(name.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace

FileReplacement::FileReplacement(std::string name, std::filesystem::path target)
    : name_(std::move(name)),
      target_(std::move(target)),
      folderName_(target_.has_parent_path() ? target_.parent_path().string() : "."),
      baseName_(target_.filename().string()),
      folder_(openFolder(folderName_)) {
  if (!folder_.isOpen()) throwFileError(name_, errno);
  lockTarget();
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
  if (file_.isOpen() && status_.st_nlink > 1) {
    reportNote(name_, "other names of the file keep what it held");
  }
  temporary_.emplace(folder_.get(), baseName_);
  Descriptor& temporary = temporary_->file();
  if (!temporary.isOpen() || !writeAll(temporary.get(), name_, content)) {
    throwFileError(name_, errno);
  }
  if (file_.isOpen()) {
    takeOverAccess(name_, file_.get(), status_, temporary.get());
  } else {
    giveUsualAccess(name_, folderName_, temporary.get());
  }
  if (::fsync(temporary.get()) != 0 || !temporary.close()) throwFileError(name_, errno);
}

void FileReplacement::commit() {
  if (!isUnchanged()) throwChangedError(name_);
  if (!temporary_->moveTo(baseName_)) throwFileError(name_, errno);
  // Writes the new name to the disk. The data is already there, so a failure does not matter.
  ::fsync(folder_.get());
}

}  // namespace tarn
