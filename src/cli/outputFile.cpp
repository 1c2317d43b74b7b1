#include "outputFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "CommandError.hpp"
#include "gzip.hpp"
#include "terminal.hpp"

namespace tarn {

namespace fs = std::filesystem;

namespace {

// As many as the kernel follows.
constexpr int MOST_LINKS = 40;
// What is written before the progress is looked at again.
constexpr std::size_t STEP_SIZE = std::size_t{1} << 22U;

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

// The file that a signal handler has to remove; empty when there is none.
std::array<char, PATH_MAX> fileInTheMaking{};
constexpr std::array<int, 3> ENDING_SIGNALS = {SIGINT, SIGTERM, SIGHUP};

extern "C" void removeFileInTheMaking(int signalNumber) {
  ::unlink(fileInTheMaking.data());
  // The handler was for one signal only; now it ends the program.
  ::raise(signalNumber);
}

/// Holds back the signals that end the program.
class SignalBlock {
 public:
  SignalBlock() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : ENDING_SIGNALS) sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, &earlier_);
  }
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;
  ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &earlier_, nullptr); }

 private:
  sigset_t earlier_{};
};

/// A new file beside the one that it will replace. Gone at the end, also when a signal ends the
/// program, unless it was put in place.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& target)
      : name_(target + ".XXXXXX"), file_(::mkstemp(name_.data())) {
    isThere_ = file_.isOpen();
    if (isThere_ && name_.size() < fileInTheMaking.size()) handleSignals();
    block_.reset();
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (isThere_) ::unlink(name_.c_str());
    if (!handlesSignals_) return;
    for (std::size_t i = 0; i < ENDING_SIGNALS.size(); ++i) {
      ::sigaction(ENDING_SIGNALS[i], &earlierActions_[i], nullptr);
    }
  }

  Descriptor& file() { return file_; }
  bool moveTo(const std::string& target) {
    if (std::rename(name_.c_str(), target.c_str()) != 0) return false;
    isThere_ = false;
    return true;
  }

 private:
  void handleSignals() {
    std::memcpy(fileInTheMaking.data(), name_.c_str(), name_.size() + 1);
    struct sigaction action {};
    action.sa_handler = removeFileInTheMaking;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    for (std::size_t i = 0; i < ENDING_SIGNALS.size(); ++i) {
      ::sigaction(ENDING_SIGNALS[i], &action, &earlierActions_[i]);
      // A signal that the user had ignored stays so, as under nohup.
      if (earlierActions_[i].sa_handler == SIG_IGN) {
        ::sigaction(ENDING_SIGNALS[i], &earlierActions_[i], nullptr);
      }
    }
    handlesSignals_ = true;
  }

  // First, so that no signal comes between the file and the handler that knows of it.
  std::optional<SignalBlock> block_{std::in_place};
  std::string name_;
  Descriptor file_;
  bool isThere_ = false;
  bool handlesSignals_ = false;
  std::array<struct sigaction, ENDING_SIGNALS.size()> earlierActions_{};
};

bool writeAll(int file, const std::string& path, const std::string& text) {
  Progress progress("Writing", path, text.size());
  std::size_t done = 0;
  while (done < text.size()) {
    const ssize_t count =
        ::write(file, text.data() + done, std::min(STEP_SIZE, text.size() - done));
    if (count < 0 && errno != EINTR) return false;
    if (count <= 0) continue;
    done += static_cast<std::size_t>(count);
    progress.advance(static_cast<std::size_t>(count));
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
  if (!file.isOpen() || !writeAll(file.get(), path, text) || !file.close()) {
    throwFileError(path, errno);
  }
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

void replaceWith(const std::string& path, const std::string& content) {
  const fs::path target = followLinks(path);
  struct stat status {};
  const bool exists = ::stat(target.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) throwFileError(path, errno);
  if (exists && !S_ISREG(status.st_mode)) return writeInPlace(path, content);
  // A file that its owner made read-only is not to be replaced either.
  if (exists && ::access(target.c_str(), W_OK) != 0) throwFileError(path, errno);

  if (exists && status.st_nlink > 1) {
    tellNote(path, "other names of the file keep what it held");
  }
  TemporaryFile temporary(target.string());
  Descriptor& file = temporary.file();
  if (!file.isOpen() || !writeAll(file.get(), path, content) ||
      !takeOver(file.get(), exists ? &status : nullptr) || ::fsync(file.get()) != 0 ||
      !file.close() || !temporary.moveTo(target.string())) {
    throwFileError(path, errno);
  }
  flushFolder(target.parent_path());
}

}  // namespace

void writeOutput(const std::string& text) {
  if (writeAll(STDOUT_FILENO, "standard output", text)) return;
  if (errno == EPIPE) throw OutputClosed();
  throwFileError("standard output", errno);
}

void replaceFile(const std::string& path, const std::string& text) {
  if (isGzipName(path)) {
    replaceWith(path, gzip(path, text));
  } else {
    replaceWith(path, text);
  }
}

}  // namespace tarn
