#include "libtarn/util/countElements.hpp"

#include <algorithm>
#include <string_view>

#include "../model/elementWalk.hpp"
#include "../text/attributeNames.hpp"
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

}  // namespace

ElementCounts countElements(const model::LibTarnDocument& document) {
  ElementCounts counts;
  model::walkElements(*document.getItsTarnDomDocument()->getRootElement(),
                      [&counts](const rapidxml::xml_node<char>& element, std::size_t depth) {
                        ++counts.elements;
                        if (isParameter(element)) ++counts.parameters;
                        counts.depth = std::max(counts.depth, depth);
                        return true;
                      });
  return counts;
}

}  // namespace util
}  // namespace libtarn
