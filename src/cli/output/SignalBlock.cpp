#include "output/SignalBlock.hpp"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>

namespace tarn {

namespace {

SignalSet allSignals() {
  SignalSet signals{};
  signals.fill(~0UL);
  return signals;
}

}  // namespace

SignalSet librarySignals() {
  constexpr std::size_t WORD_BITS = sizeof(unsigned long) * CHAR_BIT;
  SignalSet signals{};
  for (const std::size_t number : {32U, 33U}) {
    signals[(number - 1) / WORD_BITS] |= 1UL << (number - 1) % WORD_BITS;
  }
  return signals;
}

SignalSet changeBlocked(int how, const SignalSet& signals) {
  SignalSet earlier{};
  ::syscall(SYS_rt_sigprocmask, how, signals.data(), earlier.data(), sizeof(signals));
  return earlier;
}

SignalBlock::SignalBlock() : earlier_(changeBlocked(SIG_BLOCK, allSignals())) {}

}  // namespace tarn
