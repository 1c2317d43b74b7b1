#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/IElement.hpp"

namespace libtarn {
namespace model {

/// A single-valued parameter, `p`: a name (none inside a list) and a text.
///
/// Lifetime and threads as for every IElement.
class TARN_API Scalar : public IElement {
 public:
  /// The tag.
  static constexpr const char* TAG_NAME = "p";

  Scalar* getNextSiblingElement() const override = 0;

  /// The name, "" when there is none.
  virtual std::string getId() const = 0;
  /// The name, null when it is absent or empty.
  virtual const char* getName() const = 0;
  /// Whether the text is empty or absent.
  virtual bool isValueEmpty() const = 0;
  /// The text, never null; good until the next setValue() and beyond, as all pool memory.
  virtual const char* getValue() const = 0;
  /// Copies `value` into the pool; it may be the element's own text.
  virtual void setValue(const char* value) = 0;
  /// True when name and value fit `pattern`, in which "#", and an absent or empty text, is a
  /// wildcard.
  virtual bool match(const Scalar& pattern) const = 0;
};

}  // namespace model
}  // namespace libtarn
