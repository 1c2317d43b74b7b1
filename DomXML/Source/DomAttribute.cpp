#include "libtarn/DomAttribute.hpp"

#include <cstring>
#include <string_view>

namespace libDomXml {

namespace {

// Compares texts: `current` counts up to a NUL that it may hold. It need not have a terminating
// one.
bool isSame(const char* current, std::size_t size, const char* text) {
  return std::string_view(current, strnlen(current, size)) == text;
}

}  // namespace

void DomAttribute::setTagName(const char* name) {
  if (!name) name = "";
  if (isSame(this->name(), name_size(), name)) return;
  this->name(domFactory_.allocateString(name, 0));
}

void DomAttribute::setValue(const char* value) {
  if (!value) value = "";
  if (isSame(this->value(), value_size(), value)) return;
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
