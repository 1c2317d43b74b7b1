#pragma once

#include <cstddef>
#include <optional>

#include "libtarn/DomElement.hpp"

namespace libtarn {
namespace model {

/// A value that an attribute of an element is to get: everything that needs memory is done when it
/// is made, so that set() cannot fail.
class StagedAttribute {
 public:
  /// Copies the texts into the pool of `element`, which must live as long as this object. Nothing
  /// is copied when the attribute has that value already.
  StagedAttribute(libDomXml::DomElement& element, const char* name, const char* value);

  /// The value, until set().
  const char* text() const { return text_; }
  /// Gives the attribute the value, or adds it.
  void set();
  /// After set(): the attribute is as it was.
  void takeBack();

 private:
  libDomXml::DomElement* element_;
  rapidxml::xml_attribute<char>* attribute_;
  bool isNew_;
  char* text_;  // the value that set() gives, and then the one that there was
  std::size_t size_;
};

/// The attributes that a managed object is to get, set in this order.
struct StagedAttributes {
  std::optional<StagedAttribute> className;
  std::optional<StagedAttribute> version;
  std::optional<StagedAttribute> distName;

  bool haveKeys() const { return className || distName; }
  void set();
  void takeBack();
};

}  // namespace model
}  // namespace libtarn
