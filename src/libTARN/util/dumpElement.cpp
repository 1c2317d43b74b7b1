#include "libtarn/util/dumpElement.hpp"

#include "libtarn/Assertion.hpp"
#include "libtarn/DomElement.hpp"
#include "libtarn/model/IElement.hpp"
#include "libtarn/rapidxml/rapidxml_print.hpp"

namespace libtarn {
namespace util {

namespace {

int depthOf(const rapidxml::xml_node<char>& node) {
  int depth = 0;
  const rapidxml::xml_node<char>* owner = node.parent();
  for (; owner && owner->type() != rapidxml::node_document; owner = owner->parent()) ++depth;
  return depth;
}

}  // namespace

void dumpElement(const model::IElement& element, std::string& out) {
  const auto* const node = dynamic_cast<const libDomXml::DomElement*>(&element);
  TARN_ASSERT(node, "element of this library");
  out.clear();
  rapidxml::print_node(out, node, 0, depthOf(*node));
}

}  // namespace util
}  // namespace libtarn
