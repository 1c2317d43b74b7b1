#include "output/report/ViolationSearch.hpp"

#include <algorithm>

#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/validation/Violation.hpp"
#include "libtarn/model/validation/validateObject.hpp"
#include "output/HostLog.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::validation::validateObject;
using libtarn::model::validation::Violation;

namespace {

// Of the document and of each object.
constexpr std::size_t MOST_VIOLATIONS = 1000;
// Of all violations of objects, with their paths, which the page does not show; and of the others.
constexpr std::size_t MOST_BYTES = std::size_t{16} << 20U;

Findings findingsOf(const std::vector<Violation>& violations, std::size_t count) {
  Findings findings;
  for (const Violation& violation : violations) findings.messages.push_back(violation.message);
  findings.leftOut = count - violations.size();
  return findings;
}

bool isOfObject(const Violation& violation) {
  static const std::string path = std::string(LibTarnDocument::TAG_NAME) + " > " +
                                  LibTarnCmData::TAG_NAME + " > " + LibTarnManagedObject::TAG_NAME;
  return violation.path.compare(0, path.size(), path) == 0;
}

}  // namespace

ViolationSearch::ViolationSearch(LibTarnDocument& document)
    : document_(document), bytesLeft_(MOST_BYTES) {
  std::vector<Violation> violations;
  std::size_t count = 0;
  document.validate(&violations, MOST_VIOLATIONS, MOST_BYTES, &count);
  HostLog::takeError();  // what the violations say, too
  isValid_ = count == 0;
  if (isValid_) return;
  violations.erase(std::remove_if(violations.begin(), violations.end(), isOfObject),
                   violations.end());
  const std::size_t others = count - std::min(count, countInObjects());
  aroundObjects_ = findingsOf(violations, std::max(violations.size(), others));
  leftOut_ = aroundObjects_.leftOut;
}

Findings ViolationSearch::ofObject(const LibTarnManagedObject& object) {
  if (isValid_) return {};
  std::vector<Violation> violations;
  std::size_t count = 0;
  validateObject(object, &violations, MOST_VIOLATIONS, bytesLeft_, &count);
  for (const Violation& violation : violations) {
    bytesLeft_ -= std::min(bytesLeft_, violation.message.size() + violation.path.size());
  }
  Findings findings = findingsOf(violations, count);
  leftOut_ += findings.leftOut;
  return findings;
}

std::size_t ViolationSearch::countInObjects() const {
  const LibTarnCmData* const cmData = document_.getLibTarnCmData();
  if (!cmData) return 0;
  std::size_t sum = 0;
  for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
    std::vector<Violation> violations;
    std::size_t count = 0;
    validateObject(*object, &violations, 0, 0, &count);
    sum += count;
  }
  return sum;
}

}  // namespace tarn
