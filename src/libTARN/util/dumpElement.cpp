#include "libtarn/util/dumpElement.hpp"

#include "libtarn/Assertion.hpp"
#include "libtarn/DomElement.hpp"
#include "libtarn/model/IElement.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"

namespace libtarn {
namespace util {

namespace {

const libDomXml::DomElement& nodeOf(const model::IElement& element) {
  const auto* const node = dynamic_cast<const libDomXml::DomElement*>(&element);
  TARN_ASSERT(node, "element of this library");
  return *node;
}

unsigned int depthOf(const rapidxml::xml_node<char>& node) {
  unsigned int depth = 0;
  const rapidxml::xml_node<char>* owner = node.parent();
  for (; owner && owner->type() != rapidxml::node_document; owner = owner->parent()) ++depth;
  return depth;
}

}  // namespace

void dumpElement(const model::IElement& element, std::string& out) {
  dumpElement(element, out, depthOf(nodeOf(element)));
}

void dumpElement(const model::IElement& element, std::string& out, unsigned int depth) {
  const libDomXml::DomElement& node = nodeOf(element);
  out.clear();
  rapidxml::print_node(out, &node, 0, static_cast<int>(depth));
}

}  // namespace util
}  // namespace libtarn
