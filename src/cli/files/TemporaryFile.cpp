#include "files/TemporaryFile.hpp"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

namespace tarn {

namespace {

constexpr std::size_t SUFFIX_SIZE = 7;  // a dot and six characters
constexpr int MOST_NAMES = 100;

// The file that a signal handler removes.
struct FileInTheMaking {
  int folder = -1;
  std::array<char, NAME_MAX + 1> name{};
};
FileInTheMaking fileInTheMaking;

extern "C" void removeFileInTheMaking(int signalNumber) {
  ::unlinkat(fileInTheMaking.folder, fileInTheMaking.name.data(), 0);
  // The handler was for one signal only; now it ends the program.
  ::raise(signalNumber);
}

// Signals with the kernel's numbers. The C library reserves two signals and lets nobody block or
// handle them, but when another process sends one it still ends the program.
using SignalSet = std::array<unsigned long, (_NSIG - 1) / (sizeof(unsigned long) * CHAR_BIT)>;

SignalSet librarySignals() {
  constexpr std::size_t WORD_BITS = sizeof(unsigned long) * CHAR_BIT;
  SignalSet signals{};
  for (const std::size_t number : {32U, 33U}) {
    signals[(number - 1) / WORD_BITS] |= 1UL << (number - 1) % WORD_BITS;
  }
  return signals;
}

SignalSet allSignals() {
  SignalSet signals{};
  signals.fill(~0UL);
  return signals;
}

// Returns what was blocked before.
SignalSet changeBlocked(int how, const SignalSet& signals) {
  SignalSet earlier{};
  ::syscall(SYS_rt_sigprocmask, how, signals.data(), earlier.data(), sizeof(signals));
  return earlier;
}

/// Blocks all signals.
class SignalBlock {
 public:
  SignalBlock() : earlier_(changeBlocked(SIG_BLOCK, allSignals())) {}
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;
  ~SignalBlock() { changeBlocked(SIG_SETMASK, earlier_); }

 private:
  SignalSet earlier_;
};

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

}  // namespace

TemporaryFile::TemporaryFile(int folder, const std::string& name) : folder_(folder) {
  sigemptyset(&handled_);
  changeBlocked(SIG_BLOCK, librarySignals());
  // No signal may arrive after the file is created and before the handler knows of it.
  const SignalBlock block;
  create(name);
  if (file_.isOpen()) handleSignals();
}

TemporaryFile::~TemporaryFile() {
  {
    const SignalBlock block;
    if (isThere_) ::unlinkat(folder_, name_.c_str(), 0);
    leaveSignals();
  }
  changeBlocked(SIG_UNBLOCK, librarySignals());
}

bool TemporaryFile::moveTo(const std::string& name) {
  const SignalBlock block;
  if (::renameat(folder_, name_.c_str(), folder_, name.c_str()) != 0) return false;
  isThere_ = false;
  leaveSignals();
  return true;
}

void TemporaryFile::create(const std::string& name) {
  const std::string stem = stemOf(folder_, name);
  for (int i = 0; i < MOST_NAMES && !file_.isOpen(); ++i) {
    name_ = stem + randomSuffix();
    file_ = Descriptor(
        ::openat(folder_, name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file_.isOpen() && errno != EEXIST) return;
  }
  isThere_ = file_.isOpen();
}

void TemporaryFile::handleSignals() {
  fileInTheMaking.folder = folder_;
  std::memcpy(fileInTheMaking.name.data(), name_.c_str(), name_.size() + 1);
  struct sigaction action {};
  action.sa_handler = removeFileInTheMaking;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
  for (int number = 1; number < _NSIG; ++number) {
    if (!endsProgram(number)) continue;
    if (::sigaction(number, &action, nullptr) == 0) sigaddset(&handled_, number);
  }
}

void TemporaryFile::leaveSignals() {
  for (int number = 1; number < _NSIG; ++number) {
    if (sigismember(&handled_, number) == 1) ::signal(number, SIG_DFL);
  }
  sigemptyset(&handled_);
}

}  // namespace tarn
