#pragma once

#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/IElement.hpp"
#include "libtarn/model/indexation/TarnCollection.hpp"

namespace libtarn {
namespace model {

class Scalar;

/// A structured value of a list, `item`: named components, which are `p` elements.
///
/// Lifetime and threads as for every IElement.
class TARN_API Structure : public IElement {
 public:
  /// The tag.
  static constexpr const char* TAG_NAME = "item";

  Structure* getNextSiblingElement() const override = 0;

  /// Returns true if there is a component of that name.
  virtual bool hasComponent(const std::string& name) const = 0;
  /// Returns the component of that name, or null.
  virtual Scalar* getComponent(const std::string& name) const = 0;
  /// Returns all components in byte order of their names; see TarnCollection for edits during an
  /// iteration.
  virtual indexation::ScalarCollection getComponents() const = 0;
  /// Appends a detached `p` of this document. Returns 0, or 1 with nothing changed when a component
  /// of that name exists.
  virtual std::uint8_t addComponent(Scalar& component) = 0;
  /// Returns true if every component of `pattern` is matched by a component of this item.
  virtual bool match(const Structure& pattern) const = 0;
};

}  // namespace model
}  // namespace libtarn
