#include "documents/faults.hpp"

#include <algorithm>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "documents/faultRules.hpp"
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
  found.fault.rule = ruleOf(finding.kind).id;
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
  found.fault.rule = ruleOf(fault.kind).id;
  found.fault.message = std::move(fault.message);
  found.fault.note = std::move(fault.relatedMessage);
  found.offset = fault.offset;
  found.noteOffset = fault.relatedOffset;
  return found;
}

Found foundIn(const Diagnostic& refusal) {
  Found found;
  found.fault.rule = ruleOf(ModelFinding::Kind::MalformedXml).id;
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

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

// The columns of ascending offsets in UTF-16 code units, which editors and code reviews count.
// Takes one pass over the text, whatever the length of its lines. Of invalid UTF-8 a column is only
// near the fault.
std::vector<std::size_t> unicodeColumns(std::string_view text,
                                        const std::vector<std::size_t>& offsets) {
  // Editors do not count a byte order mark.
  std::size_t at =
      text.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK ? BYTE_ORDER_MARK.size() : 0;
  std::size_t column = 1;
  std::vector<std::size_t> columns;
  columns.reserve(offsets.size());
  for (const std::size_t offset : offsets) {
    for (; at < offset && at < text.size(); ++at) {
      const auto byte = static_cast<unsigned char>(text[at]);
      const bool isContinuation = (byte & 0xC0U) == 0x80U;
      const bool isBeyondBasicPlane = byte >= 0xF0U;
      column += isContinuation ? 0 : isBeyondBasicPlane ? 2 : 1;
      if (byte == '\n') column = 1;
    }
    columns.push_back(column);
  }
  return columns;
}

/// The places of offsets in a file, each of which it was given before.
class Places {
 public:
  /// One pass over the file finds all places.
  Places(TextFile& file, const std::vector<Found>& found, const CheckScope& scope) {
    for (const Found& each : found) {
      if (each.offset != NO_OFFSET) offsets_.push_back(each.offset);
      if (each.noteOffset != NO_OFFSET) offsets_.push_back(each.noteOffset);
    }
    std::sort(offsets_.begin(), offsets_.end());
    offsets_.erase(std::unique(offsets_.begin(), offsets_.end()), offsets_.end());
    positions_ = file.locate(offsets_);
    if (scope.unicodeColumns && !offsets_.empty()) {
      unicodeColumns_ = unicodeColumns(withoutNul(file.read()), offsets_);
    }
  }

  std::optional<FaultPlace> of(std::size_t offset) const {
    if (offset == NO_OFFSET) return std::nullopt;
    const auto found = std::lower_bound(offsets_.begin(), offsets_.end(), offset);
    const auto index = static_cast<std::size_t>(found - offsets_.begin());
    return FaultPlace{positions_[index], unicodeColumns_.empty() ? 0 : unicodeColumns_[index]};
  }

 private:
  std::vector<std::size_t> offsets_;
  std::vector<TextPosition> positions_;
  std::vector<std::size_t> unicodeColumns_;  // empty when they are not asked for
};

std::vector<Fault> placed(TextFile& file, std::vector<Found>&& found, const CheckScope& scope) {
  const Places places(file, found, scope);
  std::vector<Fault> faults;
  faults.reserve(found.size());
  for (Found& each : found) {
    each.fault.place = places.of(each.offset);
    each.fault.notePlace = places.of(each.noteOffset);
    faults.push_back(std::move(each.fault));
  }
  return faults;
}

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

// Its place is the one that the parser names.
Found foundAs(const Diagnostic& refusal, ModelFinding&& finding) {
  Found found = foundIn(std::move(finding));
  found.offset = refusal.offset;
  return found;
}

// The finding that the refusal names. A validation reports the first one in the order of names.
Found namedBy(const Diagnostic& refusal, std::vector<ModelFinding>&& findings) {
  if (refusal.code == ParseResult::Malformed) {
    const auto refused = findRefused(refusal, findings);
    return refused == findings.end() ? foundIn(refusal) : foundAs(refusal, std::move(*refused));
  }
  for (ModelFinding& finding : findings) {
    if (finding.message == refusal.message) return foundIn(std::move(finding));
  }
  return foundIn(refusal);
}

std::vector<Found> findNamed(TextFile& file, const Diagnostic& refusal) {
  std::vector<Found> found;
  found.push_back(namedBy(refusal, Diagnosis::of(file.read(), Diagnosis::NO_LIMIT, MOST_BYTES)));
  if (refusal.code == ParseResult::Malformed) {
    const std::vector<char> text = file.read();
    append(checkXmlTags(withoutNul(text), MOST_END_TAGS), found);
  }
  return found;
}

bool isBefore(const Found& a, const Found& b) { return a.offset < b.offset; }

}  // namespace

Faults findFault(TextFile& file, const Diagnostic& refusal, const CheckScope& scope) {
  try {
    Faults faults;
    faults.list = placed(file, findNamed(file, refusal), scope);
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
      first = foundAs(refusal, std::move(*refused));
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
  faults.list = placed(file, std::move(found), scope);
  return faults;
}

}  // namespace tarn
