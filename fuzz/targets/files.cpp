// One command that writes or replaces a file, step by step. Other programs change the file and its
// folder in any way between the steps, while the command waits for a lock and while it flushes.
// After each step the disk must agree with a model in memory. The result may replace the file only
// when nothing happened to the file in between.

#include <fcntl.h>
#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "../support/FileTree.hpp"
#include "../support/check.hpp"
#include "CommandError.hpp"
#include "files/Destination.hpp"
#include "files/TextFile.hpp"
#include "output/Progress.hpp"
#include "output/terminal.hpp"

namespace {

using fuzz::FileNode;
using fuzz::FileNodePtr;
using fuzz::FileTree;
using fuzz::PathEnd;

constexpr int MOST_ACTS = 3;   // at a time
constexpr int MOST_WAITS = 4;  // before the lock is let go
constexpr std::size_t MOST_BYTES = 40;
// Folders last, so that most changes are to files.
constexpr std::array<const char*, 9> PATHS = {"work/a/doc",  "work/b/doc", "work/a/old",
                                              "work/b/old",  "work/doc",   "work/a/doc~",
                                              "work/b/doc~", "work/a",     "work/b"};
constexpr std::size_t FILE_PATHS = 7;
constexpr std::array<const char*, 7> LINK_TARGETS = {"doc", "old", "../b/doc",   "../a/old",
                                                     "b",   "a",   "missing/doc"};
constexpr std::array<mode_t, 8> MODES = {0644, 0600, 0640, 0666, 0604, 0755, 02750, 04711};
constexpr std::array<mode_t, 3> MASKS = {022, 077, 0};
constexpr uid_t SOMEBODY = 1234;
constexpr const char* SUFFIX = "~";  // of the old file that is kept

/// A path on a file system in memory, if there is one. When this process ends, in whatever way,
/// another process removes what is there.
class Ground {
 public:
  Ground() : path_(base() + "/tarn-fuzz.XXXXXX") {
    fuzz::check(::mkdtemp(path_.data()) != nullptr, "a folder can be made");
    std::array<int, 2> pipe{};
    fuzz::check(::pipe2(pipe.data(), O_CLOEXEC) == 0, "a pipe can be made");
    const pid_t child = ::fork();
    fuzz::check(child >= 0, "a process can be made");
    if (child == 0) removeAtEnd(pipe);
    ::close(pipe[0]);
  }

  std::string path() const { return path_ + "/tree"; }

 private:
  static std::string base() {
    if (const char* const wanted = std::getenv("TMPDIR")) return wanted;
    return ::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  }

  // The other end is closed when the fuzzer ends.
  [[noreturn]] void removeAtEnd(const std::array<int, 2>& pipe) {
    ::setsid();
    ::close(pipe[1]);
    char byte = 0;
    while (::read(pipe[0], &byte, 1) < 0 && errno == EINTR) continue;
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
    ::_exit(0);
  }

  std::string path_;
};

/// A file that another command has locked.
class Rival {
 public:
  /// Returns true if it has the lock.
  bool lock(const std::string& path, const FileNodePtr& node) {
    release();
    file_ = tarn::Descriptor(::open(path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    fuzz::check(file_.isOpen(), "a file can be opened");
    struct flock wholeFile {};
    wholeFile.l_type = F_WRLCK;
    wholeFile.l_whence = SEEK_SET;
    if (::fcntl(file_.get(), F_OFD_SETLK, &wholeFile) == 0) node_ = node;
    if (!node_) file_ = tarn::Descriptor();
    return node_ != nullptr;
  }
  void release() {
    file_ = tarn::Descriptor();
    node_ = nullptr;
  }
  const FileNodePtr& node() const { return node_; }

 private:
  tarn::Descriptor file_;
  FileNodePtr node_;
};

class Session {
 public:
  /// The one whose command calls functions of the system.
  static Session* current;
  /// Paths, without links, of all files that this process has read. The command remembers them.
  static std::set<std::string> everRead;

  Session(FuzzedDataProvider& input, const std::string& path) : input_(input), tree_(path) {
    ::umask(mask_);
    tree_.makeFolder("work");
    tree_.makeFolder("work/a");
    tree_.makeFolder("work/b");
    tree_.replace(PATHS[0], "first", pickMode());
    current = this;
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { current = nullptr; }

  void run() {
    act();
    act();
    runCommand();
    destination_.reset();
    if (!temporary_.empty()) tree_.noteRemoval(folder_, temporary_);
    tree_.compare();
  }

  void whenFlushing(int file) {
    if (step_ != Step::Writing) return;
    temporary_ = tree_.adopt(folder_);
    fuzz::check(!temporary_.empty(), "the new file is in the folder of the other one");
    checkTemporary(file);
    actInStep();
  }

  void whenLocking() {
    if (step_ == Step::Beginning && !isActing_) actInStep();  // not a rival
  }

  void whenWaiting() {
    fuzz::check(step_ == Step::Beginning && rival_.node(), "who waits is waiting for a lock");
    actInStep();
    if (++waits_ >= MOST_WAITS) rival_.release();
  }

  void whenNoting() { isNoted_ = isNoted_ || step_ == Step::Writing; }

 private:
  enum class Step { None, Beginning, Writing };
  enum class Outcome { Replaced, Left, Either };

  std::string path() {
    return PATHS[input_.ConsumeIntegralInRange<std::size_t>(0, PATHS.size() - 1)];
  }
  std::string filePath() {
    return PATHS[input_.ConsumeIntegralInRange<std::size_t>(0, FILE_PATHS - 1)];
  }
  mode_t pickMode() { return input_.PickValueInArray(MODES); }
  std::string content() {
    return newContent(input_.ConsumeIntegralInRange<std::size_t>(0, MOST_BYTES));
  }
  std::string newContent(std::size_t size) {
    std::string text = std::to_string(++contents_);
    text.resize(size, '.');
    return text;
  }

  // Changes by others between two steps of the command.
  void act() {
    const int count = input_.ConsumeIntegralInRange<int>(0, MOST_ACTS);
    for (int i = 0; i < count; ++i) actOnce();
  }

  void actInStep() {
    isActing_ = true;
    const int count = input_.ConsumeIntegralInRange<int>(0, MOST_ACTS);
    for (int i = 0; i < count; ++i) actOnce();
    actedInStep_ = actedInStep_ || count > 0;
    isActing_ = false;
  }

  void actOnce() {
    switch (input_.ConsumeIntegralInRange<int>(0, 16)) {
      case 0:
        return;
      case 1:
        return tree_.overwrite(filePath(), content());
      case 2:
        return overwriteWithSameSize(filePath());
      case 3:
        return tree_.truncate(filePath());
      case 4:
        return tree_.append(filePath(), content());
      case 5:
        return tree_.replace(filePath(), content(), pickMode());
      case 6:
        return tree_.remove(path());
      case 7:
        return tree_.makeLink(path(), input_.PickValueInArray(LINK_TARGETS));
      case 8:
        return tree_.makeHardLink(filePath(), filePath());
      case 9:
        return tree_.makeFolder(path());
      case 10:
        return tree_.makeFifo(filePath());
      case 11:
        return changeRights(filePath());
      case 12:
        return tree_.exchange(path(), path());
      case 13:
        return tree_.move(path(), path());
      case 14:
        return lockAsRival(filePath());
      case 15:
        return replaceAsRival(filePath());
      default:
        return rival_.release();
    }
  }

  void overwriteWithSameSize(const std::string& path) {
    const std::optional<PathEnd> end = tree_.follow(path);
    if (!end || !end->node) return;
    tree_.overwrite(path, newContent(end->node->content.size()));
  }

  void changeRights(const std::string& path) {
    const bool isGivenAway = input_.ConsumeBool();
    tree_.changeRights(path, pickMode(), isGivenAway ? SOMEBODY : 0, isGivenAway ? SOMEBODY : 0);
  }

  void lockAsRival(const std::string& path) {
    const std::optional<PathEnd> end = tree_.find(path);
    if (!end || !end->node || end->node->kind != FileNode::File) return;
    const bool isLocked = rival_.lock(tree_.onDisk(path), end->node);
    if (step_ == Step::Beginning) return;
    fuzz::check(isLocked == (end->node != locked_), "the command alone has the lock");
  }

  // Like a command that has the lock.
  void replaceAsRival(const std::string& path) {
    const std::optional<PathEnd> end = tree_.find(path);
    if (!rival_.node() || !end || end->node != rival_.node()) return;
    tree_.replace(path, content(), end->node->mode);
    rival_.release();
  }

  void runCommand() {
    source_ = filePath();
    isInPlace_ = input_.ConsumeBool();
    isKept_ = isInPlace_ && input_.ConsumeBool();
    wanted_ = isInPlace_ ? source_ : path();
    if (!begin()) return;
    act();
    std::string text;
    if (!read(text)) return;
    act();
    result_ = text + "+";
    if (!write()) return;
    tree_.compare();
    if (input_.ConsumeBool()) return;  // the command finds something wrong
    act();
    commit();
  }

  bool begin() {
    const std::optional<PathEnd> end = tree_.follow(wanted_);
    const bool isFound = end.has_value();
    if (isFound) target_ = tree_.pathIn(*end->folder, end->name);
    const bool isFifo = isFound && end->node && end->node->kind == FileNode::Fifo;
    const bool isFolder = isFound && end->node && end->node->kind == FileNode::Folder;
    const bool isRefused =
        !isFound || isFolder || (isFifo && isInPlace_) || (isKept_ && !mayKeep(*end));
    if (!did(Step::Beginning, [&] {
          destination_.emplace(
              tree_.onDisk(source_),
              tarn::Target{tree_.onDisk(wanted_), isInPlace_, isKept_ ? SUFFIX : ""});
        })) {
      fuzz::check(isRefused || actedInStep_, "a file may be replaced");
      return false;
    }
    fuzz::check(!isRefused, "what is no file is not replaced");
    isReplaced_ = !isFifo;
    if (isReplaced_) noteLock(*end);
    return true;
  }

  // Only a regular file is replaced by the old file.
  static bool mayKeep(const PathEnd& end) {
    const auto found = end.folder->children.find(end.name + SUFFIX);
    return found == end.folder->children.end() || found->second->kind == FileNode::File;
  }

  void noteLock(const PathEnd& end) {
    folder_ = end.folder;
    name_ = end.name;
    const auto found = folder_->children.find(name_);
    if (found == folder_->children.end()) return;
    locked_ = found->second;
    fuzz::check(locked_->kind == FileNode::File, "only a file is replaced");
    fuzz::check(rival_.node() != locked_, "one command at a time has the lock");
    lockedChanges_ = locked_->changes;
    lockedNames_ = tree_.namesOf(*locked_);
    lockedMode_ = locked_->mode;
    lockedOwner_ = locked_->owner;
  }

  bool read(std::string& text) {
    const std::optional<PathEnd> end = tree_.follow(source_);
    const bool isThere = end && end->node;
    if (isThere && end->node->kind == FileNode::Fifo) return false;  // would wait for a writer
    std::optional<tarn::TextFile> file;
    const bool isOpen = did(Step::None, [&] { file.emplace(tree_.onDisk(source_)); });
    fuzz::check(isOpen == (isThere && end->node->kind == FileNode::File), "files can be read");
    if (!isOpen) return false;
    read_ = tree_.pathIn(*end->folder, end->name);
    everRead.insert(read_);
    act();
    const std::vector<char> read = file->read();
    text.assign(read.data(), read.size() - 1);
    fuzz::check(text == end->node->content, "what is in the file is read");
    return true;
  }

  bool write() {
    const bool isWritten = did(Step::Writing, [&] { destination_->write(result_); });
    if (!isReplaced_) return isWritten && (checkFifo(), true);
    fuzz::check(isWritten == tree_.holds(*folder_), "a file is written");
    fuzz::check(isWritten == !temporary_.empty(), "what is written is flushed");
    fuzz::check(!isWritten || isNoted_ == (lockedNames_ > 1), "other names are noted");
    return isWritten;
  }

  // A FIFO at the beginning must be a FIFO when it is written to.
  void checkFifo() {
    const std::optional<PathEnd> end = tree_.follow(wanted_);
    fuzz::check(end && end->node && end->node->kind == FileNode::Fifo,
                "nothing but a FIFO is written to");
    std::string got(result_.size() + 1, '\0');
    const ssize_t count = ::read(end->node->fifo, got.data(), got.size());
    fuzz::check(count == static_cast<ssize_t>(result_.size()), "all goes through the FIFO");
    got.pop_back();
    fuzz::check(got == result_, "the result goes through the FIFO");
  }

  // Until the temporary file replaces the other one, nobody has more rights to it than to that one.
  void checkTemporary(int file) {
    const FileNode& made = *folder_->children.at(temporary_);
    struct stat flushed {};
    fuzz::check(::fstat(file, &flushed) == 0 && flushed.st_ino == made.number,
                "the new file is flushed");
    fuzz::check(made.content == result_, "the new file holds the result");
    fuzz::check(made.mode == (locked_ ? lockedMode_ : mode_t{0666} & ~mask_),
                "the new file has the rights of the other one");
    fuzz::check(made.owner == (locked_ ? lockedOwner_ : ::geteuid()),
                "the new file has the owner of the other one");
  }

  void commit() {
    if (!isReplaced_) return destination_->commit();
    const Outcome expected = outcome();
    const bool isDone = did(Step::None, [&] { destination_->commit(); });
    fuzz::check(isDone || expected != Outcome::Replaced, "a file that nobody changed is replaced");
    fuzz::check(!isDone || expected != Outcome::Left, "what others changed is left");
    if (!isDone) return;
    tree_.noteMove(folder_, std::exchange(temporary_, ""), folder_, name_);
    if (isKept_ && locked_) tree_.noteLink(folder_, name_ + SUFFIX, locked_);
  }

  Outcome outcome() const {
    const auto found = folder_->children.find(name_);
    const FileNodePtr there = found == folder_->children.end() ? nullptr : found->second;
    if (!locked_) return outcomeOfNew(there);
    const std::optional<PathEnd> named = tree_.follow(wanted_);
    const bool isUnchanged =
        there == locked_ && locked_->changes == lockedChanges_ && named && named->node == locked_;
    if (!isUnchanged) return Outcome::Left;
    if (isKept_ && !mayKeep({folder_, name_, locked_})) return Outcome::Left;
    if (isKept_ && everRead.count(target_ + SUFFIX) == 1) return Outcome::Either;
    return isWhereItWas() ? Outcome::Replaced : Outcome::Either;
  }

  // A file that was created meanwhile is replaced, unless the result is made of it.
  Outcome outcomeOfNew(const FileNodePtr& there) const {
    if (there && there->kind == FileNode::Folder) return Outcome::Left;
    const bool isLink = there && there->kind == FileNode::Link;
    if (isLink || !isWhereItWas()) return Outcome::Either;
    if (read_ == target_) return Outcome::Left;
    return everRead.count(target_) == 1 ? Outcome::Either : Outcome::Replaced;
  }

  // The folder may have got another name, also while the command waited for a lock.
  bool isWhereItWas() const {
    const std::optional<PathEnd> named = tree_.follow(wanted_);
    return named && named->folder == folder_ && named->name == name_ &&
           tree_.pathIn(*folder_, name_) == target_;
  }

  // True if the command did what was expected.
  template <class Work>
  bool did(Step step, const Work& work) {
    step_ = step;
    actedInStep_ = false;
    bool isDone = true;
    try {
      work();
    } catch (const tarn::CommandError& error) {
      fuzz::check(error.status() == tarn::Status::FileError, "an error of a file");
      isDone = false;
    }
    step_ = Step::None;
    return isDone;
  }

  FuzzedDataProvider& input_;
  mode_t mask_ = input_.PickValueInArray(MASKS);
  FileTree tree_;
  Rival rival_;
  unsigned contents_ = 0;
  int waits_ = 0;
  Step step_ = Step::None;
  bool actedInStep_ = false;
  bool isActing_ = false;

  // The command.
  std::string source_;
  std::string wanted_;
  bool isInPlace_ = false;
  bool isKept_ = false;  // the old file
  std::optional<tarn::Destination> destination_;
  bool isReplaced_ = false;
  FileNodePtr folder_;
  std::string name_;
  std::string target_;  // what was wanted when the command began, without links
  std::string read_;
  FileNodePtr locked_;
  unsigned lockedChanges_ = 0;
  unsigned lockedNames_ = 0;
  mode_t lockedMode_ = 0;
  uid_t lockedOwner_ = 0;
  std::string result_;
  std::string temporary_;
  bool isNoted_ = false;
};

Session* Session::current = nullptr;
std::set<std::string> Session::everRead;

const Ground& ground() {
  static const Ground ground;
  return ground;
}

}  // namespace

// The functions of the system in which a command waits, or starts to wait.
extern "C" {

int __real_fcntl(int file, int command, void* argument);
int __real_fcntl64(int file, int command, void* argument);

int __wrap_fcntl(int file, int command, void* argument) {
  if (command == F_OFD_SETLK && Session::current) Session::current->whenLocking();
  return __real_fcntl(file, command, argument);
}

int __wrap_fcntl64(int file, int command, void* argument) {
  if (command == F_OFD_SETLK && Session::current) Session::current->whenLocking();
  return __real_fcntl64(file, command, argument);
}

int __wrap_fsync(int file) {
  if (Session::current) Session::current->whenFlushing(file);
  return 0;
}

int __wrap_nanosleep(const struct timespec* /*time*/, struct timespec* /*left*/) {
  if (Session::current) Session::current->whenWaiting();
  return 0;
}

int LLVMFuzzerInitialize(int* /*count*/, char*** /*arguments*/) {
  ground();
  return 0;
}

}  // extern "C"

// Replaces the terminal; only the notes of the command matter.
namespace tarn {

void reportNote(const std::string& /*subject*/, const std::string& /*message*/) {
  Session::current->whenNoting();
}

Progress::Progress(const char* action, const std::string& /*path*/)
    : action_(action), amount_(Amount::Seconds), total_(0) {}
Progress::Progress(const char* action, const std::string& /*path*/, std::uint64_t total)
    : action_(action), amount_(Amount::Bytes), total_(total) {}
Progress::~Progress() = default;
ProgressPause::ProgressPause() : line_(nullptr) {}
ProgressPause::~ProgressPause() { line_ = nullptr; }

}  // namespace tarn

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider input(data, size);
  Session(input, ground().path()).run();
  return 0;
}
