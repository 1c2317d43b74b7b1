#include "libtarn/DomAttributeIterator.hpp"

namespace libDomXml {

namespace {

DomAttribute& current(DomAttribute* attribute) {
  TARN_ASSERT(attribute, "attribute");
  return *attribute;
}

}  // namespace

DomAttribute& DomAttributeIterator::operator*() const { return current(attribute_); }

DomAttribute* DomAttributeIterator::operator->() const { return &current(attribute_); }

DomAttributeIterator& DomAttributeIterator::operator++() {
  attribute_ = static_cast<DomAttribute*>(current(attribute_).next_attribute());
  return *this;
}

DomAttributeIterator DomAttributeIterator::operator++(int) {
  const DomAttributeIterator before = *this;
  ++*this;
  return before;
}

DomAttributeIterator& DomAttributeIterator::operator--() {
  attribute_ = static_cast<DomAttribute*>(current(attribute_).previous_attribute());
  return *this;
}

DomAttributeIterator DomAttributeIterator::operator--(int) {
  const DomAttributeIterator before = *this;
  --*this;
  return before;
}

}  // namespace libDomXml
