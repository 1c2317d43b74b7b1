#include "libtarn/util/countElements.hpp"

#include <algorithm>
#include <string_view>

#include "../model/elementWalk.hpp"
#include "../text/attributeNames.hpp"
#include "libtarn/DomElement.hpp"
#include "libtarn/model/IElement.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/model/TarnDomDocument.hpp"

namespace libtarn {
namespace util {

namespace {

bool isParameter(const rapidxml::xml_node<char>& element) {
  const std::string_view tag(element.name(), element.name_size());
  return (tag == model::Scalar::TAG_NAME || tag == model::List::TAG_NAME) &&
         element.first_attribute(model::NAME_ATTRIBUTE);
}

ElementCounts countFrom(const rapidxml::xml_node<char>& top) {
  ElementCounts counts;
  model::walkElements(top, [&counts](const rapidxml::xml_node<char>& element, std::size_t depth) {
    ++counts.elements;
    if (isParameter(element)) ++counts.parameters;
    counts.depth = std::max(counts.depth, depth);
    return true;
  });
  return counts;
}

}  // namespace

ElementCounts countElements(const model::LibTarnDocument& document) {
  return countFrom(*document.getItsTarnDomDocument()->getRootElement());
}

ElementCounts countElements(const model::IElement& element) {
  const auto* const node = dynamic_cast<const libDomXml::DomElement*>(&element);
  return node ? countFrom(*node) : ElementCounts();
}

}  // namespace util
}  // namespace libtarn
