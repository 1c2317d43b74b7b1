#pragma once

#include <iosfwd>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

/// The name of a managed object: segments separated by "/", each a class, "-" and an instance.
///
/// A light value that borrows its text, which must outlive it. The text is null for an object
/// without a name.
class TARN_API DistinguishedName {
 public:
  /// The attribute that holds an object's name.
  static constexpr const char* ATTR_NAME = "distName";

  /// Borrows `text`, which may be null.
  DistinguishedName(const char* text) : distNameString_(text) {}  // NOLINT: converts

  /// Returns the text as it was handed over.
  const char* getText() const { return distNameString_; }

  /// Returns true if the texts are equal byte by byte. Both must have a text (asserted).
  bool operator==(const DistinguishedName& other) const;
  /// Returns true if the texts differ. Both must have a text (asserted).
  bool operator!=(const DistinguishedName& other) const { return !(*this == other); }

 private:
  const char* distNameString_;
};

/// Writes the text unchanged; nothing when it is null.
TARN_API std::ostream& operator<<(std::ostream& out, const DistinguishedName& distName);

}  // namespace model
}  // namespace libtarn
