#include "libtarn/DomFactory.hpp"

#include <cstring>

#include "libtarn/DomAttribute.hpp"
#include "libtarn/DomElement.hpp"

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
  setTexts(*element, name, value, nameSize, valueSize);
  return element;
}

DomAttribute* DomFactory::allocateAttribute(const char* name, const char* value,
                                            std::size_t nameSize, std::size_t valueSize) {
  auto* const attribute = new (allocateObject(sizeof(DomAttribute))) DomAttribute(pool_);
  setTexts(*attribute, name, value, nameSize, valueSize);
  return attribute;
}

void DomFactory::copyTexts(const rapidxml::xml_base<char>& source,
                           rapidxml::xml_base<char>& target) {
  // A text that came with its size may lack a terminating NUL.
  const auto copy = [this](const char* text, std::size_t& size) {
    size = strnlen(text, size);
    char* const result = static_cast<char*>(allocateObject(size + 1));
    std::memcpy(result, text, size);
    result[size] = '\0';
    return result;
  };
  std::size_t size = source.name_size();
  const char* const name = copy(source.name(), size);
  target.name(name, size);
  size = source.value_size();
  const char* const value = copy(source.value(), size);
  target.value(value, size);
}

void DomFactory::setTexts(rapidxml::xml_base<char>& record, const char* name, const char* value,
                          std::size_t nameSize, std::size_t valueSize) {
  if (name) {
    record.name(allocateString(name, nameSize), nameSize ? nameSize : std::strlen(name));
  }
  if (value) {
    record.value(allocateString(value, valueSize), valueSize ? valueSize : std::strlen(value));
  }
}

}  // namespace libDomXml
