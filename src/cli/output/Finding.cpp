#include "output/Finding.hpp"

#include <fmt/format.h>

namespace tarn {

using libtarn::util::TextPosition;

namespace {

std::optional<TextPosition> positionOf(const std::optional<FaultPlace>& place) {
  return place ? std::optional(place->position) : std::nullopt;
}

}  // namespace

std::string Finding::failure() const {
  if (lacksMemory()) return "not enough memory";
  return error ? error->message() : "";
}

std::string lineOf(const std::string& path, const Fault& fault) {
  return errorLine(subjectOf(path, fault), fault.message);
}

std::string noteSubject(const std::string& path, const Fault& fault) {
  return subjectAt(path, positionOf(fault.notePlace));
}

std::string subjectOf(const std::string& path, const Fault& fault) {
  const std::string subject = subjectAt(path, positionOf(fault.place));
  return fault.distName.empty() ? subject : subjectOf(subject, fault.distName);
}

std::string leftOutMessage(const Finding& finding) {
  const std::size_t count = finding.leftOutCount();
  return fmt::format("{} more {}", count, count == 1 ? "violation" : "violations");
}

}  // namespace tarn
