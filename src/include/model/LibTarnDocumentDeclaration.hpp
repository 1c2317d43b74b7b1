// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/TarnDomElement.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

/// The XML declaration of a document. A document has one, which every parse uses again.
class TARN_API LibTarnDocumentDeclaration : public TarnDomElement {
 public:
  /// The tag.
  static constexpr const char* TAG_NAME = "xml";

  /// An empty declaration, for placement in `pool`.
  explicit LibTarnDocumentDeclaration(libDomXml::IMemoryPool* pool);

  /// Returns the attribute "version", or null.
  const char* getVersion() const;
  /// Returns the attribute "encoding", or null.
  const char* getEncoding() const;

  using TarnDomElement::clone;
  /// Always throws ModelException.
  libDomXml::IDomElement* clone() const override;
  /// Always throws ModelException.
  libDomXml::IDomElement* clone(libDomXml::IDomDocument* document) const;
  /// Not to be called: logs an ERROR line and returns null.
  TarnDomElement* clone(util::TarnFactory& factory) const override;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;
};

}  // namespace model
}  // namespace libtarn
