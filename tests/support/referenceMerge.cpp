#include "support/referenceMerge.hpp"

#include <algorithm>
#include <map>

namespace tarn_test {

namespace {

constexpr std::size_t MOST_LOGS = 50;

struct Kind {
  std::string tag;
  bool keepsAttributes;
  bool keepsName;  // alone
  bool keepsValue;
  bool keepsChildren;
};

// In the order in which the prefixes of tags are compared.
const Kind KINDS[] = {
    {"managedObject", true, true, false, true}, {"cmData", true, true, false, true},
    {"header", true, true, false, true},        {"log", true, true, true, false},
    {"list", false, true, false, true},         {"p", true, true, true, false},
    {"item", false, false, false, true},        {"extension", false, true, false, true}};

const Kind& kindOf(const std::string& tag) {
  return *std::find_if(std::begin(KINDS), std::end(KINDS),
                       [&](const Kind& kind) { return kind.tag.compare(0, tag.size(), tag) == 0; });
}

std::vector<const ReferenceElement*> childrenByName(const ReferenceElement& owner,
                                                    const char* tag) {
  std::map<std::string, const ReferenceElement*> sorted;
  for (const ReferenceElement& child : owner.children) {
    if (child.tag == tag) sorted.emplace(child.attributeOr("name"), &child);
  }
  std::vector<const ReferenceElement*> children;
  for (const auto& entry : sorted) children.push_back(entry.second);
  return children;
}

void removeChildren(ReferenceElement& owner, const char* tag, const std::string& name) {
  auto& children = owner.children;
  children.erase(std::remove_if(children.begin(), children.end(),
                                [&](const ReferenceElement& child) {
                                  return child.tag == tag && child.attributeOr("name") == name;
                                }),
                 children.end());
}

void updateScalar(ReferenceElement& object, const ReferenceElement& parameter) {
  for (ReferenceElement& child : object.children) {
    if (child.tag != "p" || child.attributeOr("name") != parameter.attributeOr("name")) continue;
    child.value = parameter.value;
    return;
  }
  object.children.push_back(copyOf(parameter));
}

void update(ReferenceElement& source, const ReferenceElement& delta) {
  for (const ReferenceElement* parameter : childrenByName(delta, "p"))
    updateScalar(source, *parameter);
  for (const ReferenceElement* list : childrenByName(delta, "list")) {
    removeChildren(source, "list", list->attributeOr("name"));
    source.children.push_back(copyOf(*list));
  }
  for (const ReferenceElement& child : delta.children) {
    if (child.tag != "extension") continue;
    removeChildren(source, "extension", child.attributeOr("name"));
    source.children.push_back(copyOf(child));
  }
}

using Objects = std::map<std::string, ReferenceElement*>;

Objects objectsOf(ReferenceElement& cmData) {
  Objects objects;
  for (ReferenceElement& child : cmData.children) {
    if (child.tag == "managedObject") objects.emplace(child.attributeOr("distName"), &child);
  }
  return objects;
}

std::string operationOf(const ReferenceElement& object, bool isThere) {
  const std::string* const operation = object.attribute("operation");
  if (operation && *operation != "auto") return *operation;
  return isThere ? "update" : "create";
}

void addLogs(ReferenceElement& source, ReferenceElement& delta) {
  ReferenceElement* const target = source.firstChild("header");
  const ReferenceElement* const header = delta.firstChild("header");
  if (!target || !header) return;
  bool added = false;
  for (const ReferenceElement& child : header->children) {
    if (child.tag != "log") continue;
    target->children.push_back(copyOf(child));
    added = true;
  }
  if (!added) return;
  const auto isLog = [](const ReferenceElement& child) { return child.tag == "log"; };
  auto& children = target->children;
  auto excess = static_cast<std::size_t>(std::count_if(children.begin(), children.end(), isLog));
  for (; excess > MOST_LOGS; --excess) {
    children.erase(std::find_if(children.begin(), children.end(), isLog));
  }
}

}  // namespace

ReferenceElement copyOf(const ReferenceElement& element) {
  const Kind& kind = kindOf(element.tag);
  ReferenceElement copy;
  copy.tag = kind.tag;
  if (kind.keepsValue) copy.value = element.value;
  for (const auto& [name, value] : element.attributes) {
    if (!kind.keepsAttributes && !(kind.keepsName && name == "name")) continue;
    if (!copy.attribute(name)) copy.attributes.emplace_back(name, value);
  }
  if (!kind.keepsChildren) return copy;
  for (const ReferenceElement& child : element.children) copy.children.push_back(copyOf(child));
  return copy;
}

bool referenceMergeObject(ReferenceElement& cmData, const ReferenceElement& object) {
  const Objects objects = objectsOf(cmData);
  const auto it = objects.find(object.attributeOr("distName"));
  const bool isThere = it != objects.end();
  const std::string operation = operationOf(object, isThere);
  if (isThere == (operation == "create")) return false;
  if (operation == "create") {
    cmData.children.push_back(copyOf(object));
  } else if (operation == "delete") {
    cmData.children.erase(cmData.children.begin() + (it->second - cmData.children.data()));
  } else {
    update(*it->second, object);
  }
  return true;
}

bool referenceMerge(ReferenceElement& source, ReferenceElement& delta) {
  ReferenceElement* const sourceData = source.firstChild("cmData");
  ReferenceElement* const deltaData = delta.firstChild("cmData");
  if (!sourceData || !deltaData) return false;
  const Objects deltas = objectsOf(*deltaData);
  const Objects there = objectsOf(*sourceData);
  for (const auto& [name, object] : deltas) {
    const bool isThere = there.count(name) > 0;
    if (isThere == (operationOf(*object, isThere) == "create")) return false;
  }
  for (const auto& [name, object] : deltas) {
    object->setAttribute("operation", operationOf(*object, there.count(name) > 0));
    referenceMergeObject(*sourceData, *object);
  }
  addLogs(*sourceData, *deltaData);
  return true;
}

}  // namespace tarn_test
