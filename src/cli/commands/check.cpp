// Validates documents, as many at a time as there are cores.

#include <fmt/format.h>

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <filesystem>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "CommandLine.hpp"
#include "documents/Finding.hpp"
#include "libtarn/util/TextPosition.hpp"
#include "output/json.hpp"
#include "output/outputFile.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

using libtarn::util::TextPosition;

namespace {

struct CheckRequest {
  std::vector<std::string> files;
  CheckScope scope;
  bool json = false;
  unsigned jobs = 0;  ///< Documents at a time; 0 for as many as there are cores.
};

constexpr const char* NO_MEMORY = "not enough memory";

void report(const std::string& path, const Fault& fault) {
  reportError(errorLine(subjectOf(path, fault), fault.message));
  if (!fault.note.empty()) reportNote(subjectAt(path, fault.notePlace), fault.note);
}

void report(const std::string& path, const Finding& finding) {
  if (finding.lacksMemory()) return reportError(errorLine(path, NO_MEMORY));
  if (finding.error) return reportError(finding.error->what());
  if (finding.status == Status::Done) {
    return writeOutput(fmt::format("{}: {}\n", printable(path), styled(Style::Good, "ok")));
  }
  for (const Fault& fault : finding.faults) report(path, fault);
  if (const std::size_t leftOut = finding.faultCount - finding.faults.size()) {
    reportError(errorLine(
        path, fmt::format("{} more {}", leftOut, leftOut == 1 ? "violation" : "violations")));
  }
}

Json orNull(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

void addPlace(Json& json, const std::optional<TextPosition>& place) {
  json["line"] = place ? Json(place->line) : Json(nullptr);
  json["column"] = place ? Json(place->column) : Json(nullptr);
}

Json jsonOf(const Fault& fault) {
  Json json = {{"message", fault.message}};
  addPlace(json, fault.place);
  json["path"] = orNull(fault.path);
  json["dn"] = orNull(fault.distName);
  if (!fault.note.empty()) {
    json["note"] = {{"message", fault.note}};
    addPlace(json["note"], fault.notePlace);
  }
  return json;
}

// The first fault, or why there is none to be had.
Json firstOf(const Finding& finding) {
  if (!finding.faults.empty()) return jsonOf(finding.faults.front());
  Fault none;
  if (finding.error) {
    none.message = finding.error->message();
    none.place = finding.error->place();
  }
  if (finding.lacksMemory()) none.message = NO_MEMORY;
  Json json = jsonOf(none);
  json["message"] = orNull(none.message);
  return json;
}

void reportJson(const std::string& path, const Finding& finding, const CheckScope& scope) {
  Json json = {{"file", path}, {"result", static_cast<int>(finding.status)}};
  json.update(firstOf(finding));
  if (scope.all || scope.strict) {
    json["violationCount"] = finding.faultCount;
    json["violations"] = Json::array();
    for (const Fault& fault : finding.faults) json["violations"].push_back(jsonOf(fault));
  }
  writeOutput(jsonText(json) + "\n");
}

void report(const std::string& path, const Finding& finding, const CheckRequest& request) {
  if (request.json) {
    reportJson(path, finding, request.scope);
  } else {
    report(path, finding);
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
Status checkAndReport(std::size_t number, const CheckRequest& request, Workers* workers) {
  const std::string& path = request.files[number];
  try {
    const Finding finding = workers ? workers->finding(number) : checkFile(path, request.scope);
    report(path, finding, request);
    return finding.status;
  } catch (const std::bad_alloc&) {
    reportNoMemory(path.c_str());
    return Status::FileError;
  }
}

// Returns the highest status of the files.
Status checkFiles(const CheckRequest& request) {
  Status highest = Status::Done;
  std::optional<Workers> workers;
  try {
    workers.emplace(request);
  } catch (const std::bad_alloc&) {  // NOLINT(bugprone-empty-catch): the main thread does it
  }
  for (std::size_t i = 0; i < request.files.size(); ++i) {
    highest = std::max(highest, checkAndReport(i, request, workers ? &*workers : nullptr));
  }
  return highest;
}

}  // namespace

void addCheck(CommandLine& line) {
  auto [options, request] = line.add<CheckRequest>("check", "Validate documents", checkFiles);
  options.addArguments("FILE", request.files, "The documents; - is standard input");
  options.addFlag("--all", request.scope.all, "Report every violation");
  options.addNumber("--limit", request.scope.limit,
                    "Most violations to report for a file; 0 for all that fit 64 MiB");
  options.allowOnlyWith("--limit", "--all");
  options.addFlag("--strict", request.scope.strict,
                  "Report every violation, and what a conforming XML parser refuses");
  options.addFlag("--json", request.json, "Write a JSON object for each file, on a line");
  options.addNumber("--jobs", request.jobs,
                    "Documents to validate at a time; 0 for as many as there are cores");
}

}  // namespace tarn
