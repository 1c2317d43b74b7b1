#include "libtarn/model/validation/Diagnosis.hpp"

#include <cstring>
#include <utility>

#include "../TypedChildren.hpp"
#include "FaultFinder.hpp"
#include "TolerantDocument.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/model/DistinguishedNameValidator.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "libtarn/model/validation/Validator.hpp"

namespace libtarn {
namespace model {
namespace validation {

namespace {

// From the root, or whatever is outermost, down. Empty for a null `element`.
std::vector<const TarnDomElement*> pathOf(const TarnDomElement* element) {
  std::vector<const TarnDomElement*> path;
  const rapidxml::xml_node<char>* node = element;
  for (; node && node->type() != rapidxml::node_document; node = node->parent()) {
    path.push_back(static_cast<const TarnDomElement*>(node));
  }
  return {path.rbegin(), path.rend()};
}

std::string distNameOf(const std::vector<const TarnDomElement*>& path) {
  for (auto element = path.rbegin(); element != path.rend(); ++element) {
    const auto* const object = elementCast<LibTarnManagedObjectImp>(*element);
    if (object) return object->getAttribute(DistinguishedName::ATTR_NAME, "");
  }
  return "";
}

Finding findingOf(const Fault& fault) {
  const std::vector<const TarnDomElement*> path = pathOf(fault.element);
  Validator validator;
  for (const TarnDomElement* const each : path) each->updatePath(validator);
  Finding finding;
  finding.kind = fault.kind;
  finding.path = validator.getPath();
  finding.distName = distNameOf(path);
  finding.offset = fault.offset;
  finding.firstOffset = fault.firstOffset;
  try {
    refuse(fault, validator);
  } catch (const rapidxml::parse_error& error) {
    finding.code = ParseResult::Malformed;
    finding.message = error.what();
  } catch (const exceptions::ModelException& error) {
    finding.code = ParseResult::BrokenRule;
    finding.message = error.what();
  }
  return finding;
}

}  // namespace

std::vector<Finding> Diagnosis::of(std::vector<char> text, std::size_t limit, std::size_t byteLimit,
                                   std::size_t* count,
                                   const IDistinguishedNameValidator* nameValidator) {
  const DistinguishedNameValidator ownValidator;
  TolerantDocument document;
  document.read(text);
  const std::vector<Fault> faults =
      FaultFinder(document, nameValidator ? *nameValidator : ownValidator).find();
  std::vector<Finding> findings;
  std::size_t bytes = 0;
  for (const Fault& fault : faults) {
    if (findings.size() >= limit || bytes >= byteLimit) break;
    findings.push_back(findingOf(fault));
    const Finding& finding = findings.back();
    bytes += finding.message.size() + finding.path.size() + finding.distName.size();
  }
  if (count) *count = faults.size();
  return findings;
}

std::vector<Finding> Diagnosis::of(const char* text, std::size_t limit, std::size_t byteLimit,
                                   std::size_t* count,
                                   const IDistinguishedNameValidator* nameValidator) {
  TARN_ASSERT(text, "text");
  return of(std::vector<char>(text, text + std::strlen(text) + 1), limit, byteLimit, count,
            nameValidator);
}

}  // namespace validation
}  // namespace model
}  // namespace libtarn
