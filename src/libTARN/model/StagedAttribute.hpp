#pragma once

#include <cstddef>
#include <optional>

#include "libtarn/DomElement.hpp"

namespace libtarn {
namespace model {

/// A new value for an attribute of an element. The constructor allocates everything, so that set()
/// cannot fail.
class StagedAttribute {
 public:
  /// Copies the texts into the pool of `element`, which must live as long as this object. Copies
  /// nothing when the attribute already has that value.
  StagedAttribute(libDomXml::DomElement& element, const char* name, const char* value);

  /// Returns the new value; only before set().
  const char* text() const { return text_; }
  /// Sets the attribute to the value, or adds it.
  void set();
  /// Undoes set().
  void takeBack();

 private:
  libDomXml::DomElement* element_;
  rapidxml::xml_attribute<char>* attribute_;
  bool isNew_;
  char* text_;  // the new value; after set() the earlier one
  std::size_t size_;
};

/// New attributes of a managed object, set in this order.
struct StagedAttributes {
  std::optional<StagedAttribute> className;
  std::optional<StagedAttribute> version;
  std::optional<StagedAttribute> distName;

  /// Returns true if a key of the object index changes: class or name.
  bool haveKeys() const { return className || distName; }
  /// Sets all of them.
  void set();
  /// Undoes set(), in the opposite order.
  void takeBack();
};

}  // namespace model
}  // namespace libtarn
