// Validation without path, messages and order. The walk of a Validator takes the objects in name
// order, which jumps all over the memory; this one takes them in the order in which they lie there.

#include "keepsRules.hpp"

#include <string_view>

#include "../Internals.hpp"
#include "../TypedChildren.hpp"
#include "libtarn/model/DistinguishedNameValidator.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/LogImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "rules.hpp"

namespace libtarn {
namespace model {
namespace validation {

namespace {

using Node = rapidxml::xml_node<char>;

bool isNamed(const ScalarImp& parameter) {
  return isExactly<ScalarImp>(parameter) &&
         rules::parameterHasName(parameter.getLiteralAttribute(NAME_ATTRIBUTE));
}

// Validates the `p` children.
bool areParametersNamed(const Node& element) {
  for (Node* node = element.first_node(); node; node = node->next_sibling()) {
    const auto* const parameter = typedAs<ScalarImp>(node);
    if (parameter && !isNamed(*parameter)) return false;
  }
  return true;
}

bool areNamed(const indexation::ScalarCollection& parameters) {
  for (const auto& entry : parameters) {
    if (!isNamed(implementation<ScalarImp>(*entry.second))) return false;
  }
  return true;
}

bool isValidItem(const StructureImp& item) {
  return isExactly<StructureImp>(item) && Internals::isLibraryIndexed(item) &&
         areNamed(Internals::componentIndex(item).getUnordered());
}

bool isValidList(const ListImp& list) {
  if (!isExactly<ListImp>(list)) return false;
  if (!rules::listHasName(list.getLiteralAttribute(NAME_ATTRIBUTE))) return false;
  bool hasValues = false;
  bool hasItems = false;
  for (Node* node = list.first_node(); node; node = node->next_sibling()) {
    if (const auto* const value = typedAs<ScalarImp>(node)) {
      if (!isExactly<ScalarImp>(*value)) return false;
      hasValues = true;
    } else if (const auto* const item = typedAs<StructureImp>(node)) {
      if (!isValidItem(*item)) return false;
      hasItems = true;
    }
  }
  return rules::listHoldsOneKind(hasValues, hasItems);
}

bool hasValidName(const LibTarnManagedObjectImp& object) {
  const IDistinguishedNameValidator& validator = *object.getDistNameValidator();
  const char* const distName = object.getLiteralAttribute(DIST_NAME_ATTRIBUTE);
  return isExactly<DistinguishedNameValidator>(validator) && rules::objectHasName(distName) &&
         rules::objectHasValidName(validator, distName);
}

bool isValidObject(const LibTarnManagedObjectImp& object) {
  if (!isExactly<LibTarnManagedObjectImp>(object) || !Internals::isLibraryIndexed(object)) {
    return false;
  }
  if (!rules::objectHasClass(object.getLiteralAttribute(CLASS_ATTRIBUTE))) return false;
  if (!hasValidName(object)) return false;
  if (!areNamed(Internals::scalarIndex(object).getUnordered())) return false;
  for (const auto& entry : Internals::listIndex(object).getUnordered()) {
    if (!isValidList(implementation<ListImp>(*entry.second))) return false;
  }
  for (Node* node = object.first_node(); node; node = node->next_sibling()) {
    const auto* const extension = typedAs<LibTarnExtensionImp>(node);
    if (extension && !validation::keepsRules(*extension)) return false;
  }
  return true;
}

bool isManagedObject(const Node& node) {
  return std::string_view(node.name(), node.name_size()) == LibTarnManagedObject::TAG_NAME;
}

// A host may have unlinked objects, or changed their tags, without the index: a Validator visits
// those as well.
bool doUnlinkedObjectsKeepRules(const LibTarnCmDataImp& cmData) {
  bool allDo = true;
  Internals::objectIndex(cmData).forEach([&](const LibTarnManagedObject* indexed) {
    const auto& object = implementation<LibTarnManagedObjectImp>(*indexed);
    const bool isVisited = object.parent() == &cmData && isManagedObject(object);
    if (allDo && !isVisited) allDo = isValidObject(object);
  });
  return allDo;
}

bool isValidBody(const LibTarnCmDataImp& cmData) {
  if (!isExactly<LibTarnCmDataImp>(cmData) || !Internals::isLibraryIndexed(cmData)) return false;
  std::size_t headers = 0;
  bool hasObject = false;
  for (Node* node = cmData.first_node(); node; node = node->next_sibling()) {
    if (const auto* const object = typedAs<LibTarnManagedObjectImp>(node)) {
      if (!isValidObject(*object)) return false;
      hasObject = true;
    } else if (const auto* const header = typedAs<LibTarnHeaderImp>(node)) {
      if (!validation::keepsRules(*header)) return false;
      ++headers;
    }
  }
  const bool isPlan = cmData.getType() == LibTarnCmData::Type::PLAN;
  return rules::bodyHasOneHeader(headers) && rules::planHasObjects(isPlan, hasObject) &&
         doUnlinkedObjectsKeepRules(cmData);
}

}  // namespace

bool keepsRules(const LibTarnHeaderImp& header) {
  if (!isExactly<LibTarnHeaderImp>(header)) return false;
  for (Node* node = header.first_node(); node; node = node->next_sibling()) {
    const auto* const log = typedAs<LogImp>(node);
    if (!log) continue;
    if (!isExactly<LogImp>(*log) ||
        !rules::logHasTime(log->getLiteralAttribute(DATE_TIME_ATTRIBUTE)) ||
        !rules::logHasAction(log->getLiteralAttribute(ACTION_ATTRIBUTE))) {
      return false;
    }
  }
  return true;
}

bool keepsRules(const LibTarnExtensionImp& extension) {
  return isExactly<LibTarnExtensionImp>(extension) && areParametersNamed(extension);
}

bool keepsRules(const LibTarnDocumentInternal& root) {
  if (!rules::rootHasVersion(root.getLiteralAttribute(VERSION_ATTRIBUTE)) ||
      !rules::rootHasNamespace(root.getLiteralAttribute(XMLNS_ATTRIBUTE))) {
    return false;
  }
  std::size_t bodies = 0;
  for (Node* node = root.first_node(); node; node = node->next_sibling()) {
    const auto* const cmData = typedAs<LibTarnCmDataImp>(node);
    if (!cmData) continue;
    if (!isValidBody(*cmData)) return false;
    ++bodies;
  }
  return rules::rootHasOneBody(bodies);
}

}  // namespace validation
}  // namespace model
}  // namespace libtarn
