#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"

namespace libtarn {

namespace model {
class LibTarnManagedObject;
}

namespace editor {

/// One place where two documents differ, an old one and a new one.
///
/// A value that borrows everything: its texts and objects belong to the documents. It may be used
/// until one of the two is changed, parsed again or destroyed.
struct TARN_API Difference {
  /// What became of the place.
  enum class Kind : std::uint8_t {
    Added,    ///< Only the new document has it.
    Removed,  ///< Only the old document has it.
    Changed   ///< Both have it, with different contents.
  };

  /// What is at the place. Within an object, differences come in this order.
  enum class Part : std::uint8_t {
    Body,                ///< A `cmData`; objects in it have differences of their own.
    Header,              ///< A `header`; its log entries have differences of their own.
    Log,                 ///< A log entry, with its text; its attributes follow when it is added.
    Object,              ///< A managed object: added or removed with everything in it.
    Class,               ///< The attribute "class" of an object.
    Version,             ///< The attribute "version" of an object.
    Operation,           ///< The attribute "operation" of an object.
    Attribute,           ///< Any other attribute, of any element.
    Text,                ///< Text in an element for which the format has none.
    Other,               ///< Elements that the format does not have there, without their contents.
    Parameter,           ///< A `p` of an object.
    List,                ///< A list: added or removed; what it holds has differences of its own.
    ListValue,           ///< A plain value of a list.
    Item,                ///< An item: added or removed; its components have their own.
    Component,           ///< A component of an item.
    Extension,           ///< An extension: added or removed; its parameters have their own.
    ExtensionParameter,  ///< A parameter of an extension.
  };

  /// What became of it.
  Kind kind;
  /// What it is.
  Part part;
  /// Name of the object, "" when it has none. "" also outside of objects, where `oldObject` and
  /// `newObject` are null.
  const char* distName;
  /// Name of the parameter, list or extension, "" when it has none; outside of objects the tag of
  /// the element. Null for what belongs to the object itself.
  const char* name;
  /// Of a value or an item its position in the list, of a log entry that in the header, both
  /// counted from 1. In the old document if it has the place, otherwise in the new one. Of a second
  /// `cmData` 2, and so on. Otherwise 0.
  std::size_t position;
  /// Name of the component of an item, or of the parameter of an extension; otherwise null.
  const char* component;
  /// Name of the attribute, for Part::Attribute; otherwise null.
  const char* attribute;
  /// The value before; null when there was none, or when the part has no value.
  const char* oldValue;
  /// The value now; null when there is none, or when the part has no value.
  const char* newValue;
  /// The object before; null for an added one.
  const model::LibTarnManagedObject* oldObject;
  /// The object now; null for a removed one.
  const model::LibTarnManagedObject* newObject;

  /// Returns the path of the place in its object: "" for the object itself, "class", "version",
  /// "operation", "maxTxPower", "list[2]", "list[2].component", "extension.parameter". An attribute
  /// follows its element, "maxTxPower@unit"; text and other elements are "list.text()" and
  /// "list.*". Outside of objects it starts with a tag: "cmData@type".
  std::string path() const;
};

}  // namespace editor
}  // namespace libtarn
