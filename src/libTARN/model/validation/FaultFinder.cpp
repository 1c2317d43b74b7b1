#include "FaultFinder.hpp"

#include <algorithm>
#include <functional>
#include <utility>

#include "../../text/attributeNames.hpp"
#include "../../text/patternText.hpp"
#include "../Internals.hpp"
#include "../TypedChildren.hpp"
#include "../parseMessages.hpp"
#include "libtarn/model/IDistinguishedNameValidator.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/LogImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/exceptions/DuplicateElementException.hpp"
#include "libtarn/model/exceptions/InvalidDistinguishedNameException.hpp"
#include "libtarn/model/validation/Validator.hpp"
#include "rules.hpp"

namespace libtarn {
namespace model {
namespace validation {

namespace {

using Node = rapidxml::xml_node<char>;
using exceptions::DuplicateElementException;
using Kind = Finding::Kind;

// Absent names count as the empty text, and a name ends at a NUL, as in the indexes.
template <std::size_t Size>
const char* keyOf(const TarnDomElement& element, const char (&attribute)[Size]) {
  return textOrEmpty(element.getLiteralAttribute(attribute));
}

bool isUnknown(const Node& node) {
  return isExactly<UnknownElement>(static_cast<const libDomXml::DomElement&>(node));
}

void refuseSecondObject(const TarnDomElement& object) {
  throw DuplicateElementException::instance(LibTarnManagedObject::TAG_NAME, LibTarnCmData::TAG_NAME,
                                            DistinguishedName::ATTR_NAME,
                                            DistinguishedName(keyOf(object, DIST_NAME_ATTRIBUTE)));
}

void refuseSecondParameter(const TarnDomElement& parameter) {
  Internals::throwDuplicate(static_cast<const LibTarnManagedObjectImp&>(*parameter.parent()),
                            parameter.getTagName(), keyOf(parameter, NAME_ATTRIBUTE));
}

}  // namespace

void refuse(const Fault& fault, Validator& validator) {
  TarnDomElement* const element = fault.element;
  const auto refuseAbsence = [&](const char* attribute) {
    validator.validateAttribute(*element, attribute, nullptr);
  };
  switch (fault.kind) {
    case Kind::MalformedXml:
    case Kind::UnknownElement:
      throw rapidxml::parse_error(fault.message, nullptr);
    case Kind::RootNamespace:
      return validator.validateAttribute(*element, XMLNS_ATTRIBUTE, XMLNS);
    case Kind::RootVersion:
      return refuseAbsence(VERSION_ATTRIBUTE);
    case Kind::BodyType:
      return static_cast<LibTarnCmDataImp&>(*element).initializeType();
    case Kind::LogTime:
      return refuseAbsence(DATE_TIME_ATTRIBUTE);
    case Kind::LogAction:
      return refuseAbsence(ACTION_ATTRIBUTE);
    case Kind::ObjectClass:
      return refuseAbsence(CLASS_ATTRIBUTE);
    case Kind::ObjectName:
      return refuseAbsence(DIST_NAME_ATTRIBUTE);
    case Kind::InvalidObjectName:
      throw exceptions::InvalidDistinguishedNameException(keyOf(*element, DIST_NAME_ATTRIBUTE));
    case Kind::ObjectOperation:
      return Internals::operation(static_cast<LibTarnManagedObjectImp&>(*element)).initialize();
    case Kind::ParameterName:
    case Kind::ListName:
      return refuseAbsence(NAME_ATTRIBUTE);
    case Kind::RootBody:
      return validator.validateChildCount<LibTarnCmDataImp>(
          static_cast<const LibTarnDocumentInternal&>(*element), 1, 1);
    case Kind::BodyHeader:
      return validator.validateChildCount<LibTarnHeaderImp>(
          static_cast<const LibTarnCmDataImp&>(*element), 1, 1);
    case Kind::PlanWithoutObject:
      return validator.validateAtLeastOneChild<LibTarnManagedObjectImp>(
          static_cast<const LibTarnCmDataImp&>(*element));
    case Kind::MixedList:
      return validator.validateChildrenType(static_cast<const ListImp&>(*element));
    case Kind::DuplicateObject:
      return refuseSecondObject(*element);
    case Kind::DuplicateParameter:
    case Kind::DuplicateList:
      return refuseSecondParameter(*element);
    case Kind::DuplicateComponent:
      return Internals::throwDuplicate(static_cast<const StructureImp&>(*element->parent()),
                                       static_cast<const ScalarImp&>(*element));
  }
}

FaultFinder::FaultFinder(TolerantDocument& document,
                         const IDistinguishedNameValidator& nameValidator)
    : document_(document),
      nameValidator_(nameValidator),
      open_(document.getOpenElements().begin(), document.getOpenElements().end()) {
  std::sort(open_.begin(), open_.end(), std::less<>());
}

// Without a root the document has one without body, which is a fault of its own only when nothing
// else says why there is none.
std::vector<Fault> FaultFinder::find() {
  if (document_.hasUnknownElement()) findUnknownElements();
  if (document_.hasRoot() || (faults_.empty() && !document_.getParseError())) {
    checkRoot(*document_.getRootElement());
  }
  if (const char* const message = document_.getParseError()) {
    const std::vector<TarnDomElement*>& open = document_.getOpenElements();
    TarnDomElement* const innermost = open.empty() ? nullptr : open.back();
    faults_.push_back(
        {Kind::MalformedXml, innermost, document_.getParseErrorOffset(), util::NO_OFFSET, message});
  }
  // Of one element they stay in the order of the rules.
  std::stable_sort(faults_.begin(), faults_.end(),
                   [](const Fault& a, const Fault& b) { return a.offset < b.offset; });
  return std::move(faults_);
}

// Unknown elements

void FaultFinder::findUnknownElements() {
  for (Node* node = document_.first_node(); node; node = nextInDocumentOrder(*node)) {
    if (isUnknown(*node)) {
      note(static_cast<UnknownElement&>(*node), Kind::UnknownElement, UNKNOWN_OBJECT);
    }
  }
}

// What is below an unknown element is left out.
FaultFinder::Node* FaultFinder::nextInDocumentOrder(Node& node) const {
  if (!isUnknown(node) && node.first_node()) return node.first_node();
  Node* last = &node;
  while (last != &document_ && !last->next_sibling()) last = last->parent();
  return last == &document_ ? nullptr : last->next_sibling();
}

// Rules. Of an element that is open only what is already too much is a fault.

void FaultFinder::checkRoot(LibTarnDocumentInternal& root) {
  require(root, VERSION_ATTRIBUTE, rules::rootHasVersion, Kind::RootVersion);
  if (!rules::rootHasNamespace(root.getLiteralAttribute(XMLNS_ATTRIBUTE))) {
    note(root, Kind::RootNamespace);
  }
  std::size_t bodies = 0;
  for (Node* node = root.first_node(); node; node = node->next_sibling()) {
    auto* const cmData = typedAs<LibTarnCmDataImp>(node);
    if (!cmData) continue;
    checkBody(*cmData);
    ++bodies;
  }
  const bool mayFollow = isOpen(root) && bodies == 0;
  if (!mayFollow && !rules::rootHasOneBody(bodies)) {
    note(root, Kind::RootBody);
  }
}

void FaultFinder::checkBody(LibTarnCmDataImp& cmData) {
  auto& type = Internals::type(cmData);
  const bool hasType = type.isKnown();
  if (!hasType) note(cmData, Kind::BodyType);
  std::size_t headers = 0;
  std::vector<Named> objects;
  for (Node* node = cmData.first_node(); node; node = node->next_sibling()) {
    if (auto* const object = typedAs<LibTarnManagedObjectImp>(node)) {
      checkObject(*object);
      objects.push_back({keyOf(*object, DIST_NAME_ATTRIBUTE), object});
    } else if (auto* const header = typedAs<LibTarnHeaderImp>(node)) {
      checkHeader(*header);
      ++headers;
    }
  }
  if (!(isOpen(cmData) && headers == 0) && !rules::bodyHasOneHeader(headers)) {
    note(cmData, Kind::BodyHeader);
  }
  if (hasType) type.initialize();
  const bool isPlan = hasType && cmData.getType() == LibTarnCmData::Type::PLAN;
  if (!isOpen(cmData) && !rules::planHasObjects(isPlan, !objects.empty())) {
    note(cmData, Kind::PlanWithoutObject);
  }
  requireDistinctNames(objects, Kind::DuplicateObject);
}

void FaultFinder::checkHeader(LibTarnHeaderImp& header) {
  for (Node* node = header.first_node(); node; node = node->next_sibling()) {
    auto* const log = typedAs<LogImp>(node);
    if (!log) continue;
    require(*log, DATE_TIME_ATTRIBUTE, rules::logHasTime, Kind::LogTime);
    require(*log, ACTION_ATTRIBUTE, rules::logHasAction, Kind::LogAction);
  }
}

void FaultFinder::checkObject(LibTarnManagedObjectImp& object) {
  auto& operation = Internals::operation(object);
  if (object.getLiteralAttribute(OPERATION_ATTRIBUTE) && !operation.isKnown()) {
    note(object, Kind::ObjectOperation);
  }
  require(object, CLASS_ATTRIBUTE, rules::objectHasClass, Kind::ObjectClass);
  require(object, DIST_NAME_ATTRIBUTE, rules::objectHasName, Kind::ObjectName);
  const char* const distName = object.getLiteralAttribute(DIST_NAME_ATTRIBUTE);
  if (distName && !rules::objectHasValidName(nameValidator_, distName)) {
    note(object, Kind::InvalidObjectName);
  }
  std::vector<Named> scalars;
  std::vector<Named> lists;
  for (Node* node = object.first_node(); node; node = node->next_sibling()) {
    if (auto* const scalar = typedAs<ScalarImp>(node)) {
      checkParameterName(*scalar);
      scalars.push_back({keyOf(*scalar, NAME_ATTRIBUTE), scalar});
    } else if (auto* const list = typedAs<ListImp>(node)) {
      checkList(*list);
      lists.push_back({keyOf(*list, NAME_ATTRIBUTE), list});
    } else if (auto* const extension = typedAs<LibTarnExtensionImp>(node)) {
      for (auto* each = firstTypedChild<ScalarImp>(*extension); each;
           each = nextTypedSibling(*each)) {
        checkParameterName(*each);
      }
    }
  }
  requireDistinctNames(scalars, Kind::DuplicateParameter);
  requireDistinctNames(lists, Kind::DuplicateList);
}

void FaultFinder::checkList(ListImp& list) {
  require(list, NAME_ATTRIBUTE, rules::listHasName, Kind::ListName);
  bool hasValues = false;
  bool hasItems = false;
  for (Node* node = list.first_node(); node; node = node->next_sibling()) {
    if (auto* const item = typedAs<StructureImp>(node)) {
      checkItem(*item);
      hasItems = true;
    } else if (typedAs<ScalarImp>(node)) {
      hasValues = true;
    }
  }
  if (!rules::listHoldsOneKind(hasValues, hasItems)) note(list, Kind::MixedList);
}

void FaultFinder::checkItem(StructureImp& item) {
  std::vector<Named> components;
  for (Node* node = item.first_node(); node; node = node->next_sibling()) {
    auto* const component = typedAs<ScalarImp>(node);
    if (!component) continue;
    checkParameterName(*component);
    components.push_back({keyOf(*component, NAME_ATTRIBUTE), component});
  }
  requireDistinctNames(components, Kind::DuplicateComponent);
}

void FaultFinder::checkParameterName(TarnDomElement& parameter) {
  require(parameter, NAME_ATTRIBUTE, rules::parameterHasName, Kind::ParameterName);
}

template <std::size_t Size, class Rule>
void FaultFinder::require(TarnDomElement& element, const char (&attribute)[Size], Rule isKept,
                          Kind kind) {
  if (!isKept(element.getLiteralAttribute(attribute))) note(element, kind);
}

// Sorted, since a text can be made to crowd a hash table.
void FaultFinder::requireDistinctNames(std::vector<Named>& named, Kind kind) {
  std::stable_sort(named.begin(), named.end(),
                   [](const Named& a, const Named& b) { return a.name < b.name; });
  const Named* first = nullptr;
  for (const Named& each : named) {
    if (!first || each.name != first->name) {
      first = &each;
      continue;
    }
    note(*each.element, kind);
    faults_.back().firstOffset = document_.offsetOf(*first->element);
  }
}

void FaultFinder::note(TarnDomElement& element, Kind kind, const char* message) {
  faults_.push_back({kind, &element, document_.offsetOf(element), util::NO_OFFSET, message});
}

bool FaultFinder::isOpen(const Node& element) const {
  return std::binary_search(open_.begin(), open_.end(), &element, std::less<>());
}

}  // namespace validation
}  // namespace model
}  // namespace libtarn
