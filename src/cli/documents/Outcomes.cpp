#include "documents/Outcomes.hpp"

#include <cstddef>
#include <utility>

#include "output/counted.hpp"
#include "output/printable.hpp"
#include "output/terminal.hpp"

namespace tarn {

Outcomes::Outcomes(std::string path) : path_(std::move(path)) {}

void Outcomes::addDone(const std::string& distName, const char* what) {
  report_ += printable(distName) + ": " + what + "\n";
  ++doneCount_;
}

std::string Outcomes::count(const char* what) const {
  return printable(path_) + ": " + counted(doneCount_, "object") + " " + what + "\n";
}

void Outcomes::addFailure(Status status, const std::string& distName, const std::string& message) {
  failures_.emplace_back(status, subjectOf(path_, distName), message);
}

void Outcomes::throwIfFailed() const {
  if (failures_.empty()) return;
  for (std::size_t i = 0; i + 1 < failures_.size(); ++i) reportError(failures_[i].what());
  throw CommandError(failures_.back());
}

}  // namespace tarn
