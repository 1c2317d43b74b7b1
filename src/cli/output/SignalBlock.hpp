#pragma once

#include <array>
#include <climits>
#include <csignal>

namespace tarn {

/// Signals with the kernel's numbers. The C library reserves two signals and lets nobody block or
/// handle them, but when another process sends one it still ends the program.
using SignalSet = std::array<unsigned long, (_NSIG - 1) / (sizeof(unsigned long) * CHAR_BIT)>;

/// The two signals that the C library reserves.
SignalSet librarySignals();

/// Blocks or unblocks signals for the calling thread; `how` is that of sigprocmask(2). Returns what
/// was blocked before.
SignalSet changeBlocked(int how, const SignalSet& signals);

/// Blocks all signals for the calling thread, and for the threads that it starts, while the object
/// exists.
class SignalBlock {
 public:
  SignalBlock();
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;
  ~SignalBlock() { changeBlocked(SIG_SETMASK, earlier_); }

 private:
  SignalSet earlier_;
};

}  // namespace tarn
