#include "DomAttribute.hpp"

#include <cstring>

namespace libDomXml {

void DomAttribute::setTagName(const char* name) {
  if (!name) name = "";
  if (std::strcmp(name, getTagName()) == 0) return;
  this->name(domFactory_.allocateString(name, 0));
}

void DomAttribute::setValue(const char* value) {
  if (!value) value = "";
  if (std::strcmp(value, getValue()) == 0) return;
  this->value(domFactory_.allocateString(value, 0));
}

DomAttribute* DomAttribute::clone() const { return clone(domFactory_.getMemoryPool()); }

DomAttribute* DomAttribute::clone(IMemoryPool* pool) const {
  return DomFactory(pool).allocateAttribute(getTagName(), getValue(), 0, 0);
}

}  // namespace libDomXml
