#include "libraryGaps.hpp"

#include <algorithm>
#include <string_view>

#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtension.hpp"
#include "libtarn/model/LibTarnHeader.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Log.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/model/Structure.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnDocumentInternal;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::LibTarnManagedObjectImp;
using libtarn::model::validation::Validator;

namespace {

const LibTarnManagedObjectImp& nodeOf(const LibTarnManagedObject& object) {
  return dynamic_cast<const LibTarnManagedObjectImp&>(object);
}

bool isParameter(const rapidxml::xml_node<char>& node) {
  const std::string_view tag(node.name(), node.name_size());
  return (tag == "p" || tag == "list") && node.first_attribute("name");
}

bool isTag(const std::string& name) {
  using namespace libtarn::model;
  for (const char* const tag : {LibTarnCmData::TAG_NAME, LibTarnHeader::TAG_NAME, Log::TAG_NAME,
                                LibTarnManagedObject::TAG_NAME, LibTarnExtension::TAG_NAME,
                                List::TAG_NAME, Structure::TAG_NAME, Scalar::TAG_NAME}) {
    if (name == tag) return true;
  }
  return false;
}

}  // namespace

const char* operationText(const LibTarnManagedObject& object) {
  return nodeOf(object).getAttribute("operation", "");
}

std::string xmlOf(const LibTarnManagedObject& object) {
  std::string text;
  rapidxml::print_node(text, &nodeOf(object), 0, 0);
  return text;
}

LibTarnManagedObject& copyInto(LibTarnDocument& document, const LibTarnManagedObject& object) {
  return dynamic_cast<LibTarnManagedObject&>(*object.clone(document.getFactory()));
}

void validateDocument(const LibTarnDocument& document, Validator& validator) {
  document.getItsTarnDomDocument()->getRootElement()->accept(validator);
}

void validateObject(const LibTarnManagedObject& object, Validator& validator) {
  validator.appendToPath(LibTarnDocumentInternal::TAG_NAME, nullptr);
  validator.appendToPath(LibTarnCmData::TAG_NAME, nullptr);
  nodeOf(object).accept(validator);
}

std::string pathOfObjects() {
  return std::string(LibTarnDocumentInternal::TAG_NAME) + " > " + LibTarnCmData::TAG_NAME + " > " +
         LibTarnManagedObject::TAG_NAME;
}

// Along the links, since a document decides how deep it is.
ElementCounts countElements(const LibTarnDocument& document) {
  const rapidxml::xml_node<char>* const root = document.getItsTarnDomDocument()->getRootElement();
  ElementCounts counts;
  std::size_t depth = 1;
  const rapidxml::xml_node<char>* node = root;
  for (;;) {
    ++counts.elements;
    if (isParameter(*node)) ++counts.parameters;
    counts.depth = std::max(counts.depth, depth);
    if (const auto* const child = node->first_node()) {
      node = child;
      ++depth;
      continue;
    }
    while (node != root && !node->next_sibling()) {
      node = node->parent();
      --depth;
    }
    if (node == root) return counts;
    node = node->next_sibling();
  }
}

bool hasAbbreviatedTags(const LibTarnDocument& document) {
  libDomXml::IDomElement* const top = document.getItsTarnDomDocument()->getRootElement();
  libDomXml::IDomElement* element = top;
  for (;;) {
    if (libDomXml::IDomElement* const child = element->getFirstChild(nullptr)) {
      element = child;
    } else {
      while (element != top && !element->nextSibling(nullptr)) element = element->getParent();
      if (element == top) return false;
      element = element->nextSibling(nullptr);
    }
    if (!isTag(element->getTagName())) return true;
  }
}

}  // namespace tarn
