#pragma once

#include <iosfwd>

#include "libtarn/TarnApi.hpp"

namespace libtarn {
namespace model {

/// The name of a managed object: segments separated by "/", each a class, "-" and an instance.
///
/// A light value that borrows its text, which must outlive it. The text may be null, for an object
/// that has no name.
class TARN_API DistinguishedName {
 public:
  /// The attribute that holds an object's name.
  static constexpr const char* ATTR_NAME = "distName";

  /// `text` is borrowed; it may be null.
  DistinguishedName(const char* text) : distNameString_(text) {}  // NOLINT: converts

  /// The text as it was handed over.
  const char* getText() const { return distNameString_; }

  /// Byte equality. Both must have a text (asserted).
  bool operator==(const DistinguishedName& other) const;
  bool operator!=(const DistinguishedName& other) const { return !(*this == other); }

 private:
  const char* distNameString_;
};

/// Writes the text unchanged; nothing when there is none.
TARN_API std::ostream& operator<<(std::ostream& out, const DistinguishedName& distName);

}  // namespace model
}  // namespace libtarn
