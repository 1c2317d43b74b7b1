// Validates documents, as many at a time as there are cores.

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "CommandLine.hpp"
#include "documents/checkFile.hpp"
#include "documents/faultRules.hpp"
#include "files/InputFile.hpp"
#include "output/FindingWriter.hpp"
#include "output/terminal.hpp"

namespace tarn {

namespace {

struct CheckRequest {
  std::vector<std::string> files;
  CheckScope scope;
  std::string format;  ///< Empty when none is asked for.
  bool json = false;
  unsigned jobs = 0;  ///< Documents at a time; 0 for as many as there are cores.
};

enum class Format { Text, Json, Sarif, Junit };

const std::map<std::string, Format> FORMATS = {{"text", Format::Text},
                                               {"json", Format::Json},
                                               {"sarif", Format::Sarif},
                                               {"junit", Format::Junit}};

Format formatOf(const CheckRequest& request) {
  if (request.format.empty()) return request.json ? Format::Json : Format::Text;
  if (request.json && request.format != "json") {
    throwUsageError("--json means --format json, but --format " + request.format + " is given");
  }
  return FORMATS.at(request.format);
}

std::unique_ptr<FindingWriter> makeWriter(Format format, const CheckScope& scope) {
  switch (format) {
    case Format::Text:
      return makeTextWriter();
    case Format::Json:
      return makeJsonWriter(scope.all || scope.strict);
    case Format::Sarif:
      return makeSarifWriter(allRules());
    case Format::Junit:
      return makeJunitWriter();
  }
  return nullptr;
}

std::size_t workerCount(const CheckRequest& request) {
  const unsigned wanted = request.jobs > 0 ? request.jobs : std::thread::hardware_concurrency();
  return std::clamp<std::size_t>(wanted, 1, request.files.size());
}

bool canBeReadAgain(const std::string& path) {
  std::error_code ignored;
  return std::filesystem::is_regular_file(path, ignored);
}

/// Validates files on several threads, one document on each.
class Workers {
 public:
  /// Throws std::bad_alloc before the first thread has been started.
  explicit Workers(const CheckRequest& request)
      : request_(request), findings_(request.files.size()) {
    const std::size_t count = workerCount(request);
    // For one document at a time the calling thread is enough.
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

  /// Waits for the finding of a file, or validates the file when there are no threads. Throws the
  /// exception that a thread caught for that file.
  Finding finding(std::size_t number) {
    const std::string& path = request_.files[number];
    Result& result = findings_[number];
    if (threads_.empty() && !result.isThere()) return checkFile(path, request_.scope);
    wait(result);
    if (result.exception) std::rethrow_exception(result.exception);
    if (!result.finding->lacksMemory() || !canBeReadAgain(path)) return std::move(*result.finding);
    // Without the other threads there may be enough memory.
    joinAll();
    return checkFile(path, request_.scope);
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

  // Returns false when no thread can be started. Fewer threads do the same work more slowly.
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
        result.finding = checkFile(request_.files[i], request_.scope);
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
Status checkAndReport(std::size_t number, const CheckRequest& request, Workers* workers,
                      FindingWriter& writer) {
  const std::string& path = request.files[number];
  try {
    const Finding finding = workers ? workers->finding(number) : checkFile(path, request.scope);
    writer.add(path, finding);
    return finding.status;
  } catch (const std::bad_alloc&) {
    reportNoMemory(path.c_str());
    return Status::FileError;
  }
}

// Returns the highest status of the files.
Status checkAndReportAll(const CheckRequest& request, FindingWriter& writer) {
  Status highest = Status::Done;
  std::optional<Workers> workers;
  try {
    workers.emplace(request);
  } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): the main thread does it
  }
  for (std::size_t i = 0; i < request.files.size(); ++i) {
    highest = std::max(highest, checkAndReport(i, request, workers ? &*workers : nullptr, writer));
  }
  return highest;
}

Status checkFiles(const CheckRequest& asked) {
  CheckRequest request = asked;
  const Format format = formatOf(request);
  requireOneStandardInput(request.files);
  request.scope.unicodeColumns = format == Format::Sarif;
  const std::unique_ptr<FindingWriter> writer = makeWriter(format, request.scope);
  const Status status = checkAndReportAll(request, *writer);
  writer->finish(status);
  return status;
}

}  // namespace

void addCheck(CommandLine& line) {
  auto [options, request] = line.add<CheckRequest>("check", "Validate documents", checkFiles);
  options.addArguments("FILE", request.files, "The documents; - is standard input");
  options.addFlag("--all", request.scope.all, "Report every violation");
  options.addNumber("--limit", request.scope.limit,
                    "Most violations to report for a file; 0 for all that fit 64 MiB");
  options.allowOnlyWithAny("--limit", {"--all", "--strict"});
  options.addFlag("--strict", request.scope.strict,
                  "Report every violation, and what a conforming XML parser refuses");
  options.addWord("--format", "F", request.format, {"text", "json", "sarif", "junit"},
                  "What to write: text (the default), json, sarif or junit");
  options.addFlag("--json", request.json, "The same as --format json: an object a file, on a line");
  options.addNumber("--jobs", request.jobs,
                    "Documents to validate at a time; 0 for as many as there are cores");
}

}  // namespace tarn
