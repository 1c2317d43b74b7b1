#include "DomAttribute.hpp"

#include <string_view>

namespace libDomXml {

void DomAttribute::setTagName(const char* name) {
  if (!name) name = "";
  if (std::string_view(this->name(), name_size()) == name) return;
  this->name(domFactory_.allocateString(name, 0));
}

void DomAttribute::setValue(const char* value) {
  if (!value) value = "";
  if (std::string_view(this->value(), value_size()) == value) return;
  this->value(domFactory_.allocateString(value, 0));
}

DomAttribute* DomAttribute::clone() const { return clone(domFactory_.getMemoryPool()); }

DomAttribute* DomAttribute::clone(IMemoryPool* pool) const {
  DomFactory factory(pool);
  DomAttribute* const copy = factory.allocateAttribute(nullptr, nullptr, 0, 0);
  factory.copyTexts(*this, *copy);
  return copy;
}

}  // namespace libDomXml
