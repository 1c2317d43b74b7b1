#include "documents/faults.hpp"

#include <algorithm>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/validation/Diagnosis.hpp"
#include "libtarn/util/XmlCheck.hpp"

namespace tarn {

using libtarn::model::Diagnostic;
using libtarn::model::ParseResult;
using libtarn::model::validation::Diagnosis;
using libtarn::util::checkXml;
using libtarn::util::checkXmlTags;
using libtarn::util::NO_OFFSET;
using libtarn::util::TextPosition;
using libtarn::util::XmlFault;
using libtarn::util::XmlFaults;
using ModelFinding = libtarn::model::validation::Finding;

namespace {

// Limits the texts of a file's faults, which could otherwise grow with the square of its size.
constexpr std::size_t MOST_BYTES = std::size_t{64} << 20U;
// Of end tags: one that is missing may make all that follow it wrong.
constexpr std::size_t MOST_END_TAGS = 10;

/// A fault before its offsets have been turned into places.
struct Found {
  Fault fault;
  std::size_t offset = NO_OFFSET;
  std::size_t noteOffset = NO_OFFSET;
};

Found foundIn(ModelFinding&& finding) {
  Found found;
  found.fault.message = std::move(finding.message);
  found.fault.path = std::move(finding.path);
  found.fault.distName = std::move(finding.distName);
  found.offset = finding.offset;
  found.noteOffset = finding.firstOffset;
  if (found.noteOffset != NO_OFFSET) found.fault.note = "the first one is here";
  return found;
}

Found foundIn(XmlFault&& fault) {
  Found found;
  found.fault.message = std::move(fault.message);
  found.fault.note = std::move(fault.relatedMessage);
  found.offset = fault.offset;
  found.noteOffset = fault.relatedOffset;
  return found;
}

Found foundIn(const Diagnostic& refusal) {
  Found found;
  found.fault.message = refusal.message;
  if (refusal.code == ParseResult::Malformed) found.offset = refusal.offset;
  return found;
}

void append(XmlFaults&& faults, std::vector<Found>& found) {
  for (XmlFault& fault : faults.list) found.push_back(foundIn(std::move(fault)));
}

std::string_view withoutNul(const std::vector<char>& text) {
  return {text.data(), text.size() - 1};
}

// One pass over the file finds all places.
std::vector<Fault> placed(TextFile& file, std::vector<Found>&& found) {
  std::vector<std::size_t> offsets;
  for (const Found& each : found) {
    if (each.offset != NO_OFFSET) offsets.push_back(each.offset);
    if (each.noteOffset != NO_OFFSET) offsets.push_back(each.noteOffset);
  }
  std::sort(offsets.begin(), offsets.end());
  offsets.erase(std::unique(offsets.begin(), offsets.end()), offsets.end());
  const std::vector<TextPosition> places = file.locate(offsets);
  const auto placeOf = [&](std::size_t offset) -> std::optional<TextPosition> {
    if (offset == NO_OFFSET) return std::nullopt;
    const auto position = std::lower_bound(offsets.begin(), offsets.end(), offset);
    return places[static_cast<std::size_t>(position - offsets.begin())];
  };
  std::vector<Fault> faults;
  faults.reserve(found.size());
  for (Found& each : found) {
    each.fault.place = placeOf(each.offset);
    each.fault.notePlace = placeOf(each.noteOffset);
    faults.push_back(std::move(each.fault));
  }
  return faults;
}

// The finding that the refusal names. A validation reports the first one in the order of names.
Found namedBy(const Diagnostic& refusal, std::vector<ModelFinding>&& findings) {
  for (ModelFinding& finding : findings) {
    if (finding.message == refusal.message) return foundIn(std::move(finding));
  }
  return foundIn(refusal);
}

std::vector<Found> findNamed(TextFile& file, const Diagnostic& refusal) {
  std::vector<Found> found;
  if (refusal.code == ParseResult::Malformed) {
    found.push_back(foundIn(refusal));
    const std::vector<char> text = file.read();
    append(checkXmlTags(withoutNul(text), MOST_END_TAGS), found);
  } else {
    found.push_back(namedBy(refusal, Diagnosis::of(file.read(), Diagnosis::NO_LIMIT, MOST_BYTES)));
  }
  return found;
}

bool isBefore(const Found& a, const Found& b) { return a.offset < b.offset; }

// The finding for which the parser refused the text. An unknown element begins before the place
// that the parser names, any other finding is at that place.
std::vector<ModelFinding>::iterator findRefused(const Diagnostic& refusal,
                                                std::vector<ModelFinding>& findings) {
  auto refused = findings.end();
  for (auto each = findings.begin(); each != findings.end(); ++each) {
    const bool mayBeIt = each->code == ParseResult::Malformed && each->message == refusal.message &&
                         each->offset <= refusal.offset;
    if (mayBeIt) refused = each;
  }
  return refused;
}

}  // namespace

Faults findFault(TextFile& file, const Diagnostic& refusal) {
  try {
    Faults faults;
    faults.list = placed(file, findNamed(file, refusal));
    faults.count = faults.list.size();
    return faults;
  } catch (const std::bad_alloc&) {
    return {{foundIn(refusal).fault}, 1};
  }
}

Faults findAllFaults(TextFile& file, const Diagnostic& refusal, const CheckScope& scope) {
  const bool isMalformed = refusal.code == ParseResult::Malformed;
  const std::size_t limit = scope.limit == 0 ? Diagnosis::NO_LIMIT : scope.limit;
  Faults faults;
  std::vector<Found> found;
  Found first = foundIn(refusal);
  if (refusal.code != ParseResult::Done) {
    std::vector<ModelFinding> findings =
        Diagnosis::of(file.read(), limit, MOST_BYTES, &faults.count);
    const auto refused = isMalformed ? findRefused(refusal, findings) : findings.end();
    for (auto each = findings.begin(); each != findings.end(); ++each) {
      if (each != refused) found.push_back(foundIn(std::move(*each)));
    }
    if (refused != findings.end()) {
      first = foundIn(std::move(*refused));
      first.offset = refusal.offset;
    }
  }
  if (scope.strict || isMalformed) {
    const std::vector<char> text = file.read();
    XmlFaults xml = scope.strict ? checkXml(withoutNul(text), limit)
                                 : checkXmlTags(withoutNul(text), MOST_END_TAGS);
    faults.count += scope.strict ? xml.count : xml.list.size();
    append(std::move(xml), found);
  }
  std::stable_sort(found.begin(), found.end(), isBefore);
  if (isMalformed) found.insert(found.begin(), std::move(first));
  if (found.size() > limit) found.resize(limit);
  faults.list = placed(file, std::move(found));
  return faults;
}

}  // namespace tarn
