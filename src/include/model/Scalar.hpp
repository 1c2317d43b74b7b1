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

  /// Returns the name, "" when there is none.
  virtual std::string getId() const = 0;
  /// Returns the name, null when it is absent or empty.
  virtual const char* getName() const = 0;
  /// Returns true if the text is empty or absent.
  virtual bool isValueEmpty() const = 0;
  /// Returns the text, never null. Valid as long as the document, also after a setValue().
  virtual const char* getValue() const = 0;
  /// Copies `value` into the pool; it may be the element's own text.
  virtual void setValue(const char* value) = 0;
  /// Returns true if name and value match those of `pattern`, where "#", and an absent or empty
  /// text, is a wildcard.
  virtual bool match(const Scalar& pattern) const = 0;
};

}  // namespace model
}  // namespace libtarn
