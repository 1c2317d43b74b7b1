#include "DomFactory.hpp"

#include <cstring>

#include "DomAttribute.hpp"
#include "DomElement.hpp"

namespace libDomXml {

static_assert(alignof(DomElement) <= sizeof(void*) && alignof(DomAttribute) <= sizeof(void*),
              "a pool aligns to the size of a pointer");

char* DomFactory::allocateString(const char* source, std::size_t size) {
  TARN_ASSERT(source || size, "source || size");
  if (size == 0) size = std::strlen(source) + 1;
  char* const result = static_cast<char*>(allocateObject(size));
  if (source) std::memcpy(result, source, size);
  return result;
}

DomElement* DomFactory::allocateNode(rapidxml::node_type type, const char* name, const char* value,
                                     std::size_t nameSize, std::size_t valueSize) {
  auto* const element = new (allocateObject(sizeof(DomElement))) DomElement(pool_);
  element->type(type);
  copyTexts(*element, name, value, nameSize, valueSize);
  return element;
}

DomAttribute* DomFactory::allocateAttribute(const char* name, const char* value,
                                            std::size_t nameSize, std::size_t valueSize) {
  auto* const attribute = new (allocateObject(sizeof(DomAttribute))) DomAttribute(pool_);
  copyTexts(*attribute, name, value, nameSize, valueSize);
  return attribute;
}

void DomFactory::copyTexts(rapidxml::xml_base<char>& record, const char* name, const char* value,
                           std::size_t nameSize, std::size_t valueSize) {
  if (name) {
    record.name(allocateString(name, nameSize), nameSize ? nameSize : std::strlen(name));
  }
  if (value) {
    record.value(allocateString(value, valueSize), valueSize ? valueSize : std::strlen(value));
  }
}

}  // namespace libDomXml
