// Included by other headers; not for hosts.
#pragma once

#include <optional>
#include <string_view>

#include "libtarn/Assertion.hpp"
#include "libtarn/IDomElement.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/model/exceptions/InvalidAttributeValueException.hpp"
#include "libtarn/model/exceptions/NoSuchAttributeException.hpp"
#include "libtarn/util/Enum.hpp"

namespace libtarn {
namespace model {

/// An attribute of one element whose text is one of the constants of `T`, together with the value
/// last read or written.
///
/// Part of the element that it belongs to. Attribute and kept value change together.
template <class T>
class TARN_API EnumeratedAttribute {
 public:
  /// For the attribute `name` of `element`; the text must live as long as the element.
  EnumeratedAttribute(libDomXml::IDomElement* element, const char* name)
      : element_(element), name_(name) {}

  /// Reads the attribute. Throws NoSuchAttributeException when it is absent, and
  /// InvalidAttributeValueException when its text is not that of a constant.
  void initialize() {
    TARN_ASSERT(0 != element_, "0 != element");
    const char* const value = element_->getAttribute(name_);
    if (!value) {
      exceptions::NoSuchAttributeException::throwException(element_->getTagName(), name_);
    }
    cached_ = toEnum(value);
  }

  /// Returns the constant with exactly that text. Throws InvalidAttributeValueException when there
  /// is none.
  util::Enum<T> toEnum(const char* string) const {
    TARN_ASSERT(0 != element_, "0 != element");
    TARN_ASSERT(0 != string, "0 != string");
    const util::Enum<T>* const constant = find(string);
    if (!constant) {
      exceptions::InvalidAttributeValueException::throwException(element_->getTagName(), name_,
                                                                 string);
    }
    return *constant;
  }

  /// Returns true if initialize() would read a value.
  bool isKnown() const {
    const char* const value = element_->getAttribute(name_);
    return value && find(value);
  }

  /// Writes the constant's text into the attribute and keeps the value.
  void set(const util::Enum<T>& value) {
    TARN_ASSERT(0 != element_, "0 != element");
    element_->setAttribute(name_, value.toString().c_str());
    cached_ = value;
  }

  /// Removes the attribute and drops the kept value.
  void remove() {
    TARN_ASSERT(0 != element_, "0 != element");
    cached_.reset();
    element_->removeAttribute(name_);
  }

  /// Returns the value last read or written, if any.
  const std::optional<util::Enum<T>>& getKept() const { return cached_; }
  /// Keeps `value` and leaves the attribute as it is.
  void setKept(const std::optional<util::Enum<T>>& value) { cached_ = value; }

  /// Returns true if a value has been read or written.
  bool hasValue() const { return cached_.has_value(); }
  /// Returns the kept value; hasValue() must be true.
  const util::Enum<T>& getValue() const { return *cached_; }

 private:
  // Compares texts one by one: constants are few, and a look-up in the map would copy the text.
  static const util::Enum<T>* find(std::string_view text) {
    for (const auto& [constantText, constant] : util::Enum<T>::getStringToEnum()) {
      if (text == constantText) return constant;
    }
    return nullptr;
  }

  libDomXml::IDomElement* element_;
  const char* name_;
  std::optional<util::Enum<T>> cached_;
};

}  // namespace model
}  // namespace libtarn
