#include "files/TemporaryFile.hpp"

#include <fcntl.h>
#include <sys/random.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <utility>

#include "output/SignalBlock.hpp"

namespace tarn {

namespace {

constexpr std::size_t SUFFIX_SIZE = 7;  // a dot and six characters
constexpr int MOST_NAMES = 100;
constexpr std::size_t MOST_FILES = 2;

// A file that a signal handler removes. A folder less than 0: none.
struct FileInTheMaking {
  int folder = -1;
  std::array<char, NAME_MAX + 1> name{};
};
std::array<FileInTheMaking, MOST_FILES> filesInTheMaking;
// The signals that have the handler.
sigset_t handled;

extern "C" void removeFilesInTheMaking(int signalNumber) {
  for (const FileInTheMaking& each : filesInTheMaking) {
    if (each.folder >= 0) ::unlinkat(each.folder, each.name.data(), 0);
  }
  // The handler was for one signal only; now it ends the program.
  ::raise(signalNumber);
}

bool isAnyInTheMaking() {
  return std::any_of(filesInTheMaking.begin(), filesInTheMaking.end(),
                     [](const FileInTheMaking& each) { return each.folder >= 0; });
}

// True if the signal ends the program by default, and may be handled.
bool endsProgram(int signalNumber) {
  constexpr std::array<int, 9> OTHERS = {SIGKILL,  SIGSTOP, SIGCHLD, SIGCONT, SIGURG,
                                         SIGWINCH, SIGTSTP, SIGTTIN, SIGTTOU};
  if (std::find(OTHERS.begin(), OTHERS.end(), signalNumber) != OTHERS.end()) return false;
  struct sigaction action {};
  return ::sigaction(signalNumber, nullptr, &action) == 0 && action.sa_handler == SIG_DFL;
}

// A prefix of `name` short enough for the file system to allow the suffix after it.
std::string stemOf(int folder, const std::string& name) {
  const long limit = ::fpathconf(folder, _PC_NAME_MAX);
  const std::size_t longest =
      limit > 0 && limit < NAME_MAX ? static_cast<std::size_t>(limit) : NAME_MAX;
  return name.substr(0, longest - std::min(longest, SUFFIX_SIZE));
}

std::string randomSuffix() {
  constexpr std::array<char, 33> LETTERS = {"abcdefghijklmnopqrstuvwxyz234567"};
  std::array<unsigned char, SUFFIX_SIZE - 1> bytes{};
  // getrandom() never splits so few bytes. If it fails, the search ends at the first name that is
  // taken.
  if (::getrandom(bytes.data(), bytes.size(), 0) < 0)
    bytes.fill(static_cast<unsigned char>(::getpid()));
  std::string suffix = ".";
  for (const unsigned char byte : bytes) suffix += LETTERS[byte % 32U];
  return suffix;
}

void handleSignals() {
  sigemptyset(&handled);
  struct sigaction action {};
  action.sa_handler = removeFilesInTheMaking;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
  for (int number = 1; number < _NSIG; ++number) {
    if (!endsProgram(number)) continue;
    if (::sigaction(number, &action, nullptr) == 0) sigaddset(&handled, number);
  }
}

void leaveSignals() {
  for (int number = 1; number < _NSIG; ++number) {
    if (sigismember(&handled, number) == 1) ::signal(number, SIG_DFL);
  }
}

}  // namespace

// Signals that the C library reserves cannot be handled, so they wait until no file is left.
TemporaryFile::TemporaryFile(int folder, const std::string& name, Kind kind) : folder_(folder) {
  changeBlocked(SIG_BLOCK, librarySignals());
  // No signal may arrive after the file is created and before the handler knows of it.
  const SignalBlock block;
  const std::string stem = stemOf(folder_, name);
  for (int i = 0; i < MOST_NAMES && !isThere_; ++i) {
    name_ = stem + randomSuffix();
    isThere_ = create(name, kind);
    if (!isThere_ && errno != EEXIST) return;
  }
  if (isThere_) enter();
}

TemporaryFile::~TemporaryFile() {
  {
    const SignalBlock block;
    if (isThere_) ::unlinkat(folder_, name_.c_str(), 0);
    leave();
  }
  if (!isAnyInTheMaking()) changeBlocked(SIG_UNBLOCK, librarySignals());
}

bool TemporaryFile::moveTo(const std::string& name) {
  const SignalBlock block;
  if (::renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0) return false;
  // Of two names of one file the kernel removes neither.
  ::unlinkat(folder_, name_.c_str(), 0);
  leave();
  return true;
}

bool TemporaryFile::isFile(const struct stat& status) const {
  struct stat own {};
  return ::fstatat(folder_, name_.c_str(), &own, AT_SYMLINK_NOFOLLOW) == 0 &&
         own.st_dev == status.st_dev && own.st_ino == status.st_ino;
}

// Returns false, with errno, when name_ cannot be given.
bool TemporaryFile::create(const std::string& name, Kind kind) {
  if (kind == Kind::SecondName) {
    return ::linkat(folder_, name.c_str(), folder_, name_.c_str(), 0) == 0;
  }
  file_ = Descriptor(
      ::openat(folder_, name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  return file_.isOpen();
}

void TemporaryFile::enter() {
  if (!isAnyInTheMaking()) handleSignals();
  for (FileInTheMaking& each : filesInTheMaking) {
    if (each.folder >= 0) continue;
    each.folder = folder_;
    std::memcpy(each.name.data(), name_.c_str(), name_.size() + 1);
    return;
  }
}

void TemporaryFile::leave() {
  if (!std::exchange(isThere_, false)) return;
  for (FileInTheMaking& each : filesInTheMaking) {
    if (each.folder >= 0 && name_ == each.name.data()) each.folder = -1;
  }
  if (!isAnyInTheMaking()) leaveSignals();
}

}  // namespace tarn
