#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace tarn {

class ProgressLine;

/// Shows what a command is doing, on the last line of the terminal that standard error is. Once the
/// command has taken a second, a thread writes the line of every action that takes longer than a
/// moment, and again as long as it lasts; the line fits the terminal. It is cleared when the action
/// ends and before any other output. Elsewhere nothing is shown.
///
/// An action within another one of the same thread is shown instead of that. Of several threads one
/// is shown.
class Progress {
 public:
  /// An action of which nobody knows how much is done. Shows how many seconds it has lasted.
  Progress(const char* action, const std::string& path);
  /// An action on `total` bytes, of which it shows the part that is done. When `total` is 0, since
  /// it is not known, shows how many bytes are done.
  Progress(const char* action, const std::string& path, std::uint64_t total);
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress();

  /// `done` bytes are done.
  void reach(std::uint64_t done) { done_.store(done, std::memory_order_relaxed); }

 private:
  friend ProgressLine;
  enum class Amount { Seconds, Bytes };

  Progress(const char* action, const std::string& path, Amount amount, std::uint64_t total);
  std::string amountText(std::int64_t time) const;

  const char* action_;
  std::string path_;
  Amount amount_;
  std::uint64_t total_;
  std::atomic<std::uint64_t> done_{0};
  std::int64_t start_ = 0;  // milliseconds of the steady clock
  bool isActive_ = false;
  Progress* outer_ = nullptr;
};

/// Clears the line and keeps it away while the object exists, so that other lines can be written.
/// The thread makes no second object, and no Progress, meanwhile. Allocates no memory.
class ProgressPause {
 public:
  ProgressPause();
  ProgressPause(const ProgressPause&) = delete;
  ProgressPause& operator=(const ProgressPause&) = delete;
  ~ProgressPause();

 private:
  ProgressLine* line_;
};

}  // namespace tarn
