#pragma once

#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/IElement.hpp"

namespace libtarn {
namespace model {

class Scalar;

/// A named group of parameters in a managed object, `extension`.
///
/// The parameters are not indexed: look-up, adding and removing walk the children. Lifetime and
/// threads as for every IElement.
class TARN_API LibTarnExtension : public IElement {
 public:
  /// The tag.
  static constexpr const char* TAG_NAME = "extension";

  LibTarnExtension* getNextSiblingElement() const override = 0;

  /// Returns the attribute "name", null when absent.
  virtual const char* getName() const = 0;
  /// Returns true if there is a parameter.
  virtual bool hasParameters() const = 0;
  /// Returns the first parameter, or null. getNextSiblingElement() returns the others.
  virtual Scalar* getParameters() const = 0;
  /// Appends a detached `p` of this document. Returns 0, or 1 with nothing changed when a parameter
  /// of that name exists.
  virtual std::uint8_t addParameter(Scalar& parameter) = 0;
  /// Returns true if there is a parameter of that name.
  virtual bool hasParameter(const std::string& name) const = 0;
  /// Returns the first parameter of that name, or null.
  virtual Scalar* getParameter(const std::string& name) const = 0;
  /// Unlinks the first parameter of that name. Returns 0, or 2 when there is none.
  virtual std::uint8_t removeParameter(const std::string& name) = 0;
};

}  // namespace model
}  // namespace libtarn
