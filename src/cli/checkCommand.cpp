#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <future>
#include <system_error>
#include <thread>
#include <vector>

#include "HostLog.hpp"
#include "commands.hpp"
#include "json.hpp"
#include "model/LibTarnDocumentInternal.hpp"
#include "model/TarnDomDocument.hpp"
#include "model/validation/Validator.hpp"
#include "model/validation/Violation.hpp"
#include "outputFile.hpp"
#include "terminal.hpp"

namespace tarn {

using libtarn::model::LibTarnDocument;
using libtarn::model::validation::Validator;
using libtarn::model::validation::Violation;

namespace {

/// What was found in one file.
struct Finding {
  Status status = Status::Done;
  std::optional<CommandError> error;  // the one fault; absent when all are collected
  std::string path;                   // of the element at fault, if it is known
  std::vector<Violation> violations;
  std::size_t violationCount = 0;  // with those left out
};

void collect(const LibTarnDocument& document, std::size_t limit, Finding& finding) {
  Validator validator(&finding.violations, limit);
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
  return finding;
}

void tell(const std::string& path, const Finding& finding) {
  if (finding.error) return tellError(finding.error->what());
  if (finding.status == Status::Done) {
    return writeOutput(fmt::format("{}: {}\n", path, styled(Style::Good, "ok")));
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

std::size_t workerCount(const CheckRequest& request) {
  const unsigned wanted = request.jobs > 0 ? request.jobs : std::thread::hardware_concurrency();
  return std::clamp<std::size_t>(wanted, 1, request.files.size());
}

/// Checks the files on several threads, each document on one of them.
class Workers {
 public:
  explicit Workers(const CheckRequest& request)
      : request_(request), findings_(request.files.size()) {
    for (std::size_t i = workerCount(request); i > 0; --i) addThread();
  }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;
  ~Workers() {
    next_ = findings_.size();  // no further ones
    for (std::thread& thread : threads_) thread.join();
  }

  /// Waits for the finding of a file.
  Finding finding(std::size_t number) { return findings_[number].get_future().get(); }

 private:
  // Fewer threads than wanted do as well, only slower.
  void addThread() {
    try {
      threads_.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
      if (threads_.empty()) throw;
    }
  }

  void work() {
    for (std::size_t i = next_++; i < findings_.size(); i = next_++) {
      try {
        findings_[i].set_value(checkFile(request_.files[i], request_));
      } catch (...) {
        findings_[i].set_exception(std::current_exception());
      }
    }
  }

  const CheckRequest& request_;
  std::vector<std::promise<Finding>> findings_;
  std::atomic<std::size_t> next_{0};
  std::vector<std::thread> threads_;
};

}  // namespace

Status checkCommand(const CheckRequest& request) {
  Status highest = Status::Done;
  Workers workers(request);
  for (std::size_t i = 0; i < request.files.size(); ++i) {
    const Finding finding = workers.finding(i);
    if (request.json) {
      tellJson(request.files[i], finding, request.all);
    } else {
      tell(request.files[i], finding);
    }
    highest = std::max(highest, finding.status);
  }
  return highest;
}

}  // namespace tarn
