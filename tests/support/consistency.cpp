#include "support/consistency.hpp"

#include <algorithm>
#include <cstring>
#include <map>
#include <set>
#include <vector>

#include "libtarn/DomAttribute.hpp"
#include "libtarn/DomElement.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentDeclaration.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "model/TypedChildren.hpp"

namespace tarn_test {

namespace {

using namespace libtarn::model;
using Node = rapidxml::xml_node<char>;
using Attribute = rapidxml::xml_attribute<char>;

// Keeps the first fault and ignores later ones.
class Findings {
 public:
  // Returns `holds`.
  bool check(bool holds, const char* what, const char* where = "") {
    if (!holds && first_.empty()) first_ = std::string(what) + " (" + where + ")";
    return holds;
  }
  bool any() const { return !first_.empty(); }
  const std::string& first() const { return first_; }

 private:
  std::string first_;
};

// Texts

bool isReadable(const char* text, std::size_t size) {
  unsigned sum = 0;
  for (std::size_t i = 0; i < size; ++i) sum += static_cast<unsigned char>(text[i]);
  return sum <= 255U * size && text[size] == '\0';
}

void checkTexts(const rapidxml::xml_base<char>& record, Findings& findings) {
  findings.check(isReadable(record.name(), record.name_size()), "name ends with a zero");
  findings.check(isReadable(record.value(), record.value_size()), "value ends with a zero");
}

// Tree

void checkAttributes(const Node& node, const libDomXml::IMemoryPool* pool, Findings& findings) {
  const Attribute* previous = nullptr;
  for (auto* attribute = node.first_attribute(); attribute && !findings.any();
       attribute = attribute->next_attribute()) {
    findings.check(attribute->parent() == &node, "parent of an attribute", node.name());
    findings.check(attribute->previous_attribute() == previous, "previous attribute", node.name());
    const auto& domAttribute = static_cast<const libDomXml::DomAttribute&>(*attribute);
    findings.check(domAttribute.getDomFactory()->getMemoryPool() == pool, "pool of an attribute",
                   node.name());
    checkTexts(*attribute, findings);
    previous = attribute;
  }
  if (!findings.any() && previous) {
    findings.check(node.last_attribute() == previous, "last attribute", node.name());
  }
}

// Checks the list of children of one node, not what is below them.
void checkChildren(const Node& node, Findings& findings) {
  const Node* previous = nullptr;
  for (const Node* child = node.first_node(); child && !findings.any();
       child = child->next_sibling()) {
    if (!findings.check(child->parent() == &node, "parent", node.name())) return;
    findings.check(child->previous_sibling() == previous, "previous sibling", node.name());
    findings.check(child->type() != rapidxml::node_document, "kind of a child", node.name());
    previous = child;
  }
  if (!findings.any() && previous) {
    findings.check(node.last_node() == previous, "last child", node.name());
  }
}

void checkNode(const Node& node, const libDomXml::IMemoryPool* pool, Findings& findings) {
  checkTexts(node, findings);
  checkAttributes(node, pool, findings);
  checkChildren(node, findings);
  if (findings.any() || node.type() == rapidxml::node_document) return;
  const auto& element = static_cast<const libDomXml::DomElement&>(node);
  findings.check(element.getDomFactory()->getMemoryPool() == pool, "pool", node.name());
}

// Calls `visit` for `top` and every node below it, as long as it returns true.
template <class Visit>
void forEachNode(const Node& top, Visit visit) {
  const Node* node = &top;
  while (visit(*node)) {
    if (node->first_node()) {
      node = node->first_node();
      continue;
    }
    while (node != &top && !node->next_sibling()) node = node->parent();
    if (node == &top) return;
    node = node->next_sibling();
  }
}

// Indexes

template <class Element>
std::vector<const Element*> childrenOf(const Node& parent) {
  std::vector<const Element*> children;
  for (auto* child = firstTypedChild<Element>(parent); child; child = nextTypedSibling(*child)) {
    children.push_back(child);
  }
  return children;
}

// `find` looks up one name.
template <class Imp, class Collection, class Find>
void checkParameterIndex(const Node& owner, const Collection& entries, Find find, Indexes indexes,
                         Findings& findings) {
  const char* previous = nullptr;
  std::set<const Imp*> indexed;
  for (const auto& entry : entries) {
    if (findings.any()) return;
    findings.check(!previous || std::strcmp(previous, entry.first) < 0, "order of an index",
                   entry.first);
    previous = entry.first;
    findings.check(find(entry.first) == entry.second, "look-up in an index", entry.first);
    const auto& element = implementation<Imp>(*entry.second);
    indexed.insert(&element);
    if (indexes == Indexes::IN_STEP) {
      findings.check(element.getId() == entry.first, "key of an index", entry.first);
      findings.check(element.parent() == &owner, "parent of an indexed element", entry.first);
    }
  }
  if (indexes != Indexes::IN_STEP || findings.any()) return;
  for (const Imp* child : childrenOf<Imp>(owner)) {
    findings.check(indexed.count(child) == 1, "child is indexed", child->getId().c_str());
  }
}

void checkStructure(const StructureImp& item, Indexes indexes, Findings& findings) {
  checkParameterIndex<ScalarImp>(
      item, item.getComponents(), [&](const char* name) { return item.getComponent(name); },
      indexes, findings);
}

void checkObject(const LibTarnManagedObjectImp& object, Indexes indexes, Findings& findings) {
  checkParameterIndex<ScalarImp>(
      object, object.getScalarParameters(),
      [&](const char* name) { return object.getScalarParameter(name); }, indexes, findings);
  checkParameterIndex<ListImp>(
      object, object.getListParameters(),
      [&](const char* name) { return object.getListParameter(name); }, indexes, findings);
  for (const auto* list : childrenOf<ListImp>(object)) {
    for (const auto* item : childrenOf<StructureImp>(*list)) {
      checkStructure(*item, indexes, findings);
    }
  }
  if (indexes != Indexes::IN_STEP) return;
  const char* const operation = object.getAttribute("operation");
  findings.check(object.getOperation().toString() == (operation ? operation : "auto"),
                 "operation kept", object.getAttribute("distName", ""));
}

void checkClasses(const LibTarnCmDataImp& cmData, const std::map<std::string, std::size_t>& counts,
                  Findings& findings) {
  for (const auto& [className, count] : counts) {
    const auto ofClass = cmData.getLibTarnManagedObjectsByClass(className);
    std::size_t found = 0;
    for (const LibTarnManagedObject* object : ofClass) {
      findings.check(className == (object->getClass() ? object->getClass() : ""),
                     "class of an index", className.c_str());
      ++found;
    }
    findings.check(found == count, "objects of a class", className.c_str());
  }
}

void checkCmData(const LibTarnCmDataImp& cmData, Indexes indexes, Findings& findings) {
  std::string previous;
  std::set<const LibTarnManagedObject*> indexed;
  std::size_t entries = 0;
  std::map<std::string, std::size_t> classes;
  for (const LibTarnManagedObject* object : cmData.getLibTarnManagedObjects()) {
    if (findings.any()) return;
    const auto& element = implementation<LibTarnManagedObjectImp>(*object);
    const std::string name = element.getAttribute("distName", "");
    if (indexes == Indexes::IN_STEP) {
      findings.check(indexed.empty() || previous < name, "order of the objects", name.c_str());
      findings.check(cmData.getLibTarnManagedObject(name.c_str()) == object, "look-up of an object",
                     name.c_str());
      findings.check(element.parent() == &cmData, "parent of an object", name.c_str());
      ++classes[object->getClass() ? object->getClass() : ""];
    }
    previous = name;
    // An element that was unlinked by itself, renamed and added again has two entries.
    const bool isNew = indexed.insert(object).second;
    findings.check(isNew || indexes == Indexes::SOUND, "object indexed once", name.c_str());
    ++entries;
  }
  findings.check(cmData.getManagedObjectNumber() == entries, "number of objects");
  const auto children = childrenOf<LibTarnManagedObjectImp>(cmData);
  for (const auto* object : children) checkObject(*object, indexes, findings);
  if (indexes != Indexes::IN_STEP || findings.any()) return;
  findings.check(children.size() == indexed.size(), "children and index");
  checkClasses(cmData, classes, findings);
  findings.check(cmData.getType().toString() == cmData.getAttribute("type", "defaults"),
                 "type kept");
}

}  // namespace

std::string brokenTree(const Node& top, const libDomXml::IMemoryPool* pool) {
  Findings findings;
  forEachNode(top, [&](const Node& node) {
    checkNode(node, pool, findings);
    return !findings.any();
  });
  return findings.first();
}

std::string brokenDocument(const LibTarnDocument& document, Indexes indexes) {
  const TarnDomDocument& dom = *document.getItsTarnDomDocument();
  const auto* const root = const_cast<TarnDomDocument&>(dom).getRootElement();
  const Node& declaration =
      *static_cast<const libDomXml::DomElement*>(dom.getDocumentDeclaration());
  for (const Node* top :
       {static_cast<const Node*>(&dom), static_cast<const Node*>(root), &declaration}) {
    std::string broken = brokenTree(*top, &dom);
    if (!broken.empty()) return broken;
  }
  Findings findings;
  for (const auto* cmData : childrenOf<LibTarnCmDataImp>(*root)) {
    checkCmData(*cmData, indexes, findings);
  }
  return findings.first();
}

}  // namespace tarn_test
