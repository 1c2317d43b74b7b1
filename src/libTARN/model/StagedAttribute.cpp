#include "StagedAttribute.hpp"

#include <cstring>

#include "libtarn/DomAttribute.hpp"

namespace libtarn {
namespace model {

StagedAttribute::StagedAttribute(libDomXml::DomElement& element, const char* name,
                                 const char* value)
    : element_(&element), attribute_(element.first_attribute(name)), isNew_(!attribute_) {
  libDomXml::DomFactory factory(element.getDomFactory()->getMemoryPool());
  if (isNew_) attribute_ = factory.allocateAttribute(name, nullptr, 0, 0);
  const bool isSame = !isNew_ && std::strcmp(attribute_->value(), value) == 0;
  text_ = isSame ? attribute_->value() : factory.allocateString(value, 0);
  size_ = isSame ? attribute_->value_size() : std::strlen(value);
}

void StagedAttribute::set() {
  char* const text = attribute_->value();
  const std::size_t size = attribute_->value_size();
  attribute_->value(text_, size_);
  text_ = text;
  size_ = size;
  if (isNew_) element_->append_attribute(attribute_);
}

void StagedAttribute::takeBack() {
  attribute_->value(text_, size_);
  if (isNew_) element_->remove_attribute(attribute_);
}

void StagedAttributes::set() {
  for (auto* const each : {&className, &version, &distName}) {
    if (*each) (*each)->set();
  }
}

void StagedAttributes::takeBack() {
  for (auto* const each : {&distName, &version, &className}) {
    if (*each) (*each)->takeBack();
  }
}

}  // namespace model
}  // namespace libtarn
