// One thread writes the line, so that actions of the library, which call nobody, are shown as well.
// It is started by the first action and never ends; what it uses is never destroyed. It blocks all
// signals: their handlers run in the threads that expect them.

#include "output/Progress.hpp"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include "output/SignalBlock.hpp"
#include "output/displayWidth.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

constexpr std::int64_t FIRST_SHOW = 1000;  // milliseconds of the command
constexpr std::int64_t NEXT_SHOW = 100;    // and of an action
constexpr std::int64_t SECOND = 1000;
constexpr std::uint64_t PERCENT = 100;
constexpr std::uint64_t MEBIBYTE = 1U << 20U;
constexpr std::size_t USUAL_COLUMNS = 80;
constexpr std::size_t LEAST_OF_PATH = 8;  // columns

std::int64_t now() {
  const auto time = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(time).count();
}

std::size_t terminalColumns() {
  struct winsize size {};
  if (::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  const char* const columns = std::getenv("COLUMNS");
  const long number = columns ? std::strtol(columns, nullptr, 10) : 0;
  return number > 0 ? static_cast<std::size_t>(number) : USUAL_COLUMNS;
}

// A program in the background leaves the terminal to the one in front.
bool isInForeground() {
  const pid_t group = ::tcgetpgrp(STDERR_FILENO);
  return group < 0 || group == ::getpgrp();
}

// "Reading PATH: 45 %" in at most `columns` columns; without the path, and at last without the
// action, when too little of them would be left.
std::string lineOf(const std::string& action, const std::string& path, const std::string& amount,
                   std::size_t columns) {
  const std::string end = amount.empty() ? "" : ": " + amount;
  const std::size_t others = action.size() + 1 + end.size();
  const std::size_t room = others < columns ? columns - others : 0;
  if (room >= std::min(LEAST_OF_PATH, displayWidth(path))) {
    return action + " " + shortened(path, room) + end;
  }
  if (action.size() + end.size() <= columns) return action + end;
  return amount.size() <= columns ? amount : "";
}

}  // namespace

/// The line and the thread that writes it.
class ProgressLine {
 public:
  ProgressLine() {
    const SignalBlock block;
    std::thread([this] { work(); }).detach();
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return isReady_; });
  }

  void enter(Progress& progress) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (current_ && owner_ != std::this_thread::get_id()) return;
    owner_ = std::this_thread::get_id();
    progress.outer_ = current_;
    progress.isActive_ = true;
    current_ = &progress;
    changed_.notify_one();
  }

  void leave(const Progress& progress) {
    const std::lock_guard<std::mutex> lock(mutex_);
    current_ = progress.outer_;
    clear();
  }

  void pause() {
    mutex_.lock();
    clear();
  }

  void resume() { mutex_.unlock(); }

 private:
  // With the mutex.
  void clear() {
    if (isShown_) std::fputs("\r\x1b[K", stderr);
    isShown_ = false;
  }

  [[noreturn]] void work() {
    // The C library unblocks one signal of its own for each thread that it starts.
    const SignalBlock block;
    std::unique_lock<std::mutex> lock(mutex_);
    isReady_ = true;
    changed_.notify_one();
    while (true) {
      if (!current_) changed_.wait(lock);
      changed_.wait_for(lock, std::chrono::milliseconds(NEXT_SHOW));
      if (current_ && isDue(now()) && isInForeground()) show();
    }
  }

  bool isDue(std::int64_t time) const {
    return time >= start_ + FIRST_SHOW && time >= current_->start_ + NEXT_SHOW;
  }

  // The last column stays free: some terminals go to the next line after it.
  void show() {
    try {
      const std::string line = lineOf(current_->action_, current_->path_,
                                      current_->amountText(now()), terminalColumns() - 1);
      std::fprintf(stderr, "\r\x1b[K%s", line.c_str());
      isShown_ = true;
    } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): nothing is shown
    }
  }

  const std::int64_t start_ = now();
  std::mutex mutex_;
  std::condition_variable changed_;
  Progress* current_ = nullptr;  // all under the mutex
  std::thread::id owner_;
  bool isReady_ = false;
  bool isShown_ = false;
};

namespace {

std::once_flag lineIsMade;
// Null: there is no capable terminal, or there was no memory.
std::atomic<ProgressLine*> progressLine{nullptr};

void makeLine() {
  try {
    if (isCapableTerminal(STDERR_FILENO)) progressLine = new ProgressLine;
  } catch (const std::bad_alloc&) {     // NOLINT(bugprone-empty-catch): nothing is shown
  } catch (const std::system_error&) {  // NOLINT(bugprone-empty-catch): there is no thread
  }
}

}  // namespace

Progress::Progress(const char* action, const std::string& path)
    : Progress(action, path, Amount::Seconds, 0) {}

Progress::Progress(const char* action, const std::string& path, std::uint64_t total)
    : Progress(action, path, Amount::Bytes, total) {}

Progress::Progress(const char* action, const std::string& path, Amount amount, std::uint64_t total)
    : action_(action), amount_(amount), total_(total) {
  std::call_once(lineIsMade, makeLine);
  ProgressLine* const line = progressLine;
  if (!line) return;
  path_ = printable(path);
  start_ = now();
  line->enter(*this);
}

Progress::~Progress() {
  if (isActive_) progressLine.load()->leave(*this);
}

std::string Progress::amountText(std::int64_t time) const {
  const std::int64_t seconds = (time - start_) / SECOND;
  if (amount_ == Amount::Seconds) return seconds > 0 ? fmt::format("{} s", seconds) : "";
  const std::uint64_t done = done_;
  return total_ > 0 ? fmt::format("{} %", std::min(done, total_) * PERCENT / total_)
                    : fmt::format("{} MiB", done / MEBIBYTE);
}

ProgressPause::ProgressPause() : line_(progressLine) {
  if (line_) line_->pause();
}

ProgressPause::~ProgressPause() {
  if (line_) line_->resume();
}

}  // namespace tarn
