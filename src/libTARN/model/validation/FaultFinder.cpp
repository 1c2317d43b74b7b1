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

// Absent names count as the empty text, and a name ends at a NUL, as in the indexes.
template <std::size_t Size>
const char* keyOf(const TarnDomElement& element, const char (&attribute)[Size]) {
  return textOrEmpty(element.getLiteralAttribute(attribute));
}

bool isUnknown(const Node& node) {
  return isExactly<UnknownElement>(static_cast<const libDomXml::DomElement&>(node));
}

// What a load or a validation throws for each kind of fault.

void refuseMalformed(const Fault& fault, Validator& /*validator*/) {
  throw rapidxml::parse_error(fault.detail, nullptr);
}

void refuseAbsence(const Fault& fault, Validator& validator) {
  validator.validateAttribute(*fault.element, fault.detail, nullptr);
}

void refuseNamespace(const Fault& fault, Validator& validator) {
  validator.validateAttribute(*fault.element, XMLNS_ATTRIBUTE, XMLNS);
}

template <class Imp, class Child>
void refuseChildCount(const Fault& fault, Validator& validator) {
  validator.validateChildCount<Child>(static_cast<const Imp&>(*fault.element), 1, 1);
}

void refusePlan(const Fault& fault, Validator& validator) {
  validator.validateAtLeastOneChild<LibTarnManagedObjectImp>(
      static_cast<const LibTarnCmDataImp&>(*fault.element));
}

void refuseType(const Fault& fault, Validator& /*validator*/) {
  static_cast<LibTarnCmDataImp&>(*fault.element).initializeType();
}

void refuseOperation(const Fault& fault, Validator& /*validator*/) {
  Internals::operation(static_cast<LibTarnManagedObjectImp&>(*fault.element)).initialize();
}

void refuseInvalidName(const Fault& fault, Validator& /*validator*/) {
  throw exceptions::InvalidDistinguishedNameException(keyOf(*fault.element, DIST_NAME_ATTRIBUTE));
}

void refuseMixedList(const Fault& fault, Validator& validator) {
  validator.validateChildrenType(static_cast<const ListImp&>(*fault.element));
}

void refuseSecondObject(const Fault& fault, Validator& /*validator*/) {
  throw DuplicateElementException::instance(
      LibTarnManagedObject::TAG_NAME, LibTarnCmData::TAG_NAME, DistinguishedName::ATTR_NAME,
      DistinguishedName(keyOf(*fault.element, DIST_NAME_ATTRIBUTE)));
}

void refuseSecondParameter(const Fault& fault, Validator& /*validator*/) {
  Internals::throwDuplicate(static_cast<const LibTarnManagedObjectImp&>(*fault.element->parent()),
                            fault.element->getTagName(), keyOf(*fault.element, NAME_ATTRIBUTE));
}

void refuseSecondComponent(const Fault& fault, Validator& /*validator*/) {
  Internals::throwDuplicate(static_cast<const StructureImp&>(*fault.element->parent()),
                            static_cast<const ScalarImp&>(*fault.element));
}

}  // namespace

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
        {refuseMalformed, innermost, document_.getParseErrorOffset(), util::NO_OFFSET, message});
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
      note(static_cast<UnknownElement&>(*node), refuseMalformed, UNKNOWN_OBJECT);
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
  require(root, VERSION_ATTRIBUTE, rules::rootHasVersion);
  if (!rules::rootHasNamespace(root.getLiteralAttribute(XMLNS_ATTRIBUTE))) {
    note(root, refuseNamespace);
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
    note(root, refuseChildCount<LibTarnDocumentInternal, LibTarnCmDataImp>);
  }
}

void FaultFinder::checkBody(LibTarnCmDataImp& cmData) {
  auto& type = Internals::type(cmData);
  const bool hasType = type.isKnown();
  if (!hasType) note(cmData, refuseType);
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
    note(cmData, refuseChildCount<LibTarnCmDataImp, LibTarnHeaderImp>);
  }
  if (hasType) type.initialize();
  const bool isPlan = hasType && cmData.getType() == LibTarnCmData::Type::PLAN;
  if (!isOpen(cmData) && !rules::planHasObjects(isPlan, !objects.empty())) {
    note(cmData, refusePlan);
  }
  requireDistinctNames(objects, refuseSecondObject);
}

void FaultFinder::checkHeader(LibTarnHeaderImp& header) {
  for (Node* node = header.first_node(); node; node = node->next_sibling()) {
    auto* const log = typedAs<LogImp>(node);
    if (!log) continue;
    require(*log, DATE_TIME_ATTRIBUTE, rules::logHasTime);
    require(*log, ACTION_ATTRIBUTE, rules::logHasAction);
  }
}

void FaultFinder::checkObject(LibTarnManagedObjectImp& object) {
  auto& operation = Internals::operation(object);
  if (object.getLiteralAttribute(OPERATION_ATTRIBUTE) && !operation.isKnown()) {
    note(object, refuseOperation);
  }
  require(object, CLASS_ATTRIBUTE, rules::objectHasClass);
  require(object, DIST_NAME_ATTRIBUTE, rules::objectHasName);
  const char* const distName = object.getLiteralAttribute(DIST_NAME_ATTRIBUTE);
  if (distName && !rules::objectHasValidName(nameValidator_, distName)) {
    note(object, refuseInvalidName);
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
  requireDistinctNames(scalars, refuseSecondParameter);
  requireDistinctNames(lists, refuseSecondParameter);
}

void FaultFinder::checkList(ListImp& list) {
  require(list, NAME_ATTRIBUTE, rules::listHasName);
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
  if (!rules::listHoldsOneKind(hasValues, hasItems)) note(list, refuseMixedList);
}

void FaultFinder::checkItem(StructureImp& item) {
  std::vector<Named> components;
  for (Node* node = item.first_node(); node; node = node->next_sibling()) {
    auto* const component = typedAs<ScalarImp>(node);
    if (!component) continue;
    checkParameterName(*component);
    components.push_back({keyOf(*component, NAME_ATTRIBUTE), component});
  }
  requireDistinctNames(components, refuseSecondComponent);
}

void FaultFinder::checkParameterName(TarnDomElement& parameter) {
  require(parameter, NAME_ATTRIBUTE, rules::parameterHasName);
}

template <std::size_t Size, class Rule>
void FaultFinder::require(TarnDomElement& element, const char (&attribute)[Size], Rule isKept) {
  if (!isKept(element.getLiteralAttribute(attribute))) note(element, refuseAbsence, attribute);
}

// Sorted, since a text can be made to crowd a hash table.
void FaultFinder::requireDistinctNames(std::vector<Named>& named, Fault::Refuse refuse) {
  std::stable_sort(named.begin(), named.end(),
                   [](const Named& a, const Named& b) { return a.name < b.name; });
  const Named* first = nullptr;
  for (const Named& each : named) {
    if (!first || each.name != first->name) {
      first = &each;
      continue;
    }
    note(*each.element, refuse);
    faults_.back().firstOffset = document_.offsetOf(*first->element);
  }
}

void FaultFinder::note(TarnDomElement& element, Fault::Refuse refuse, const char* detail) {
  faults_.push_back({refuse, &element, document_.offsetOf(element), util::NO_OFFSET, detail});
}

bool FaultFinder::isOpen(const Node& element) const {
  return std::binary_search(open_.begin(), open_.end(), &element, std::less<>());
}

}  // namespace validation
}  // namespace model
}  // namespace libtarn
