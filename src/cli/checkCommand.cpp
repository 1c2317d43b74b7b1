#include <fmt/format.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <filesystem>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "HostLog.hpp"
#include "commands.hpp"
#include "json.hpp"
#include "model/LibTarnDocumentInternal.hpp"
#include "model/TarnDomDocument.hpp"
#include "model/validation/Validator.hpp"
#include "model/validation/Violation.hpp"
#include "outputFile.hpp"
#include "printable.hpp"
#include "terminal.hpp"

namespace tarn {

using libtarn::model::LibTarnDocument;
using libtarn::model::validation::Validator;
using libtarn::model::validation::Violation;

namespace {

// Of the violations of a file: messages that repeat a long name would grow with the square of its
// size.
constexpr std::size_t MOST_VIOLATION_BYTES = std::size_t{64} << 20U;

/// What was found in one file.
struct Finding {
  Status status = Status::Done;
  std::optional<CommandError> error;  // the one fault; absent when all are collected
  std::string path;                   // of the element at fault, if it is known
  std::vector<Violation> violations;
  std::size_t violationCount = 0;  // with those left out
};

constexpr const char* NO_MEMORY = "not enough memory";

// What is found in a file for which there is no memory; takes none itself.
Finding withoutMemory() {
  HostLog::drop();
  Finding finding;
  finding.status = Status::FileError;
  return finding;
}

bool lacksMemory(const Finding& finding) {
  return finding.status == Status::FileError && !finding.error;
}

void collect(const LibTarnDocument& document, std::size_t limit, Finding& finding) {
  Validator validator(&finding.violations, limit, MOST_VIOLATION_BYTES);
  document.getItsTarnDomDocument()->getRootElement()->accept(validator);
  finding.violationCount = validator.getViolationCount();
  if (finding.violationCount > 0) finding.status = Status::RuleBroken;
}

// An error tells what is wrong but not always the path of the element, which costs a second look.
void findPath(const LibTarnDocument& document, Finding& finding) {
  Finding first;
  collect(document, 1, first);
  const bool isThatOne =
      !first.violations.empty() && first.violations.front().message == finding.error->message();
  if (isThatOne) finding.path = first.violations.front().path;
}

// Most files are valid, which takes no document to see. Log lines are those of a document.
bool isKnownToBeValid(TextFile& file) {
  return !HostLog::isAskedFor() && LibTarnDocument::isKnownToBeValid(file.read());
}

Finding checkFile(const std::string& path, const CheckRequest& request) {
  Finding finding;
  LibTarnDocument document(libtarn::model::OutOfMemory::Throw);
  try {
    TextFile file(path);
    if (isKnownToBeValid(file)) {
      // Nothing to be told.
    } else if (request.all) {
      loadDocument(file, document);
      collect(document, request.limit == 0 ? Validator::NO_LIMIT : request.limit, finding);
    } else {
      loadValidDocument(file, document);
    }
  } catch (const CommandError& error) {
    finding.status = error.status();
    finding.error = error;
    if (request.json && error.status() == Status::RuleBroken) findPath(document, finding);
  }
  HostLog::flush();
  HostLog::drop();  // a thread does not keep it
  return finding;
}

// A file that takes more memory than there is keeps none of the others from being checked.
Finding checkWithinMemory(const std::string& path, const CheckRequest& request) {
  try {
    return checkFile(path, request);
  } catch (const std::bad_alloc&) {
    return withoutMemory();
  } catch (const std::length_error&) {  // more than could be addressed
    return withoutMemory();
  }
}

void tell(const std::string& path, const Finding& finding) {
  if (lacksMemory(finding)) return tellError(errorLine(path, NO_MEMORY));
  if (finding.error) return tellError(finding.error->what());
  if (finding.status == Status::Done) {
    return writeOutput(fmt::format("{}: {}\n", printable(path), styled(Style::Good, "ok")));
  }
  for (const Violation& violation : finding.violations) {
    tellError(errorLine(path, violation.message));
  }
  if (const std::size_t leftOut = finding.violationCount - finding.violations.size()) {
    tellError(errorLine(path, fmt::format("{} more violations", leftOut)));
  }
}

Json placeOf(const Finding& finding, std::size_t libtarn::util::TextPosition::*coordinate) {
  if (!finding.error || !finding.error->place()) return nullptr;
  return *finding.error->place().*coordinate;
}

void tellJson(const std::string& path, const Finding& finding, bool all) {
  Json json = {{"file", path},
               {"result", static_cast<int>(finding.status)},
               {"message", nullptr},
               {"line", placeOf(finding, &libtarn::util::TextPosition::line)},
               {"column", placeOf(finding, &libtarn::util::TextPosition::column)},
               {"path", nullptr}};
  if (finding.error) json["message"] = finding.error->message();
  if (lacksMemory(finding)) json["message"] = NO_MEMORY;
  if (!finding.path.empty()) json["path"] = finding.path;
  if (!finding.violations.empty()) {
    json["message"] = finding.violations.front().message;
    json["path"] = finding.violations.front().path;
  }
  if (all) {
    json["violationCount"] = finding.violationCount;
    json["violations"] = Json::array();
    for (const Violation& violation : finding.violations) {
      json["violations"].push_back({{"message", violation.message}, {"path", violation.path}});
    }
  }
  writeOutput(jsonText(json) + "\n");
}

void tell(const std::string& path, const Finding& finding, const CheckRequest& request) {
  if (request.json) {
    tellJson(path, finding, request.all);
  } else {
    tell(path, finding);
  }
}

std::size_t workerCount(const CheckRequest& request) {
  const unsigned wanted = request.jobs > 0 ? request.jobs : std::thread::hardware_concurrency();
  return std::clamp<std::size_t>(wanted, 1, request.files.size());
}

bool canBeReadAgain(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored);
}

/// Checks the files on several threads, each document on one of them.
class Workers {
 public:
  /// Throws std::bad_alloc before the first thread has been started.
  explicit Workers(const CheckRequest& request)
      : request_(request), findings_(request.files.size()) {
    const std::size_t count = workerCount(request);
    // One at a time is what the caller can do itself.
    if (count == 1) return;
    threads_.reserve(count);
    while (threads_.size() < count && addThread()) {
    }
  }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;
  ~Workers() {
    stop();
    joinAll();
  }

  /// Waits for the finding of a file, or checks it when there is no thread for that. Throws what
  /// its check threw.
  Finding finding(std::size_t number) {
    const std::string& path = request_.files[number];
    Result& result = findings_[number];
    if (threads_.empty() && !result.isThere()) return checkWithinMemory(path, request_);
    wait(result);
    if (result.exception) std::rethrow_exception(result.exception);
    if (!lacksMemory(*result.finding) || !canBeReadAgain(path)) return std::move(*result.finding);
    // Alone there may be enough.
    joinAll();
    return checkWithinMemory(path, request_);
  }

 private:
  struct Result {
    bool isThere() const { return finding || exception; }

    std::optional<Finding> finding;
    std::exception_ptr exception;
  };

  void wait(const Result& result) {
    std::unique_lock<std::mutex> lock(mutex_);
    done_.wait(lock, [&result] { return result.isThere(); });
  }

  void joinAll() {
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
  }

  // False when no further thread can be had; fewer than wanted do as well, only slower.
  bool addThread() {
    try {
      threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
      return false;
    } catch (const std::bad_alloc&) {
      return false;
    }
    return true;
  }

  void stop() {
    const std::lock_guard<std::mutex> lock(mutex_);
    next_ = findings_.size();
  }

  std::size_t nextNumber() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return next_ < findings_.size() ? next_++ : next_;
  }

  void work() {
    for (std::size_t i = nextNumber(); i < findings_.size(); i = nextNumber()) {
      Result result;
      try {
        result.finding = checkWithinMemory(request_.files[i], request_);
      } catch (...) {
        result.exception = std::current_exception();
      }
      const std::lock_guard<std::mutex> lock(mutex_);
      findings_[i] = std::move(result);
      done_.notify_one();
    }
  }

  const CheckRequest& request_;
  std::mutex mutex_;
  std::condition_variable done_;
  std::vector<Result> findings_;  // under the mutex
  std::size_t next_ = 0;          // under the mutex
  std::vector<std::thread> threads_;
};

// Returns the status of the file.
Status checkAndTell(std::size_t number, const CheckRequest& request, Workers* workers) {
  const std::string& path = request.files[number];
  try {
    const Finding finding = workers ? workers->finding(number) : checkWithinMemory(path, request);
    tell(path, finding, request);
    return finding.status;
  } catch (const std::bad_alloc&) {
    tellNoMemory(path.c_str());
    return Status::FileError;
  }
}

}  // namespace

Status checkCommand(const CheckRequest& request) {
  Status highest = Status::Done;
  std::optional<Workers> workers;
  try {
    workers.emplace(request);
  } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): the main thread does it alone
  }
  for (std::size_t i = 0; i < request.files.size(); ++i) {
    highest = std::max(highest, checkAndTell(i, request, workers ? &*workers : nullptr));
  }
  return highest;
}

}  // namespace tarn
