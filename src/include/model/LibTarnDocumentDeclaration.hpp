// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/TarnDomElement.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

/// The XML declaration of a document. A document has one, used again by every parse.
class TARN_API LibTarnDocumentDeclaration : public TarnDomElement {
 public:
  static constexpr const char* TAG_NAME = "xml";

  explicit LibTarnDocumentDeclaration(libDomXml::IMemoryPool* pool);

  /// Null when the declaration has no such attribute.
  const char* getVersion() const;
  const char* getEncoding() const;

  using TarnDomElement::clone;
  /// Always throw ModelException.
  libDomXml::IDomElement* clone() const override;
  libDomXml::IDomElement* clone(libDomXml::IDomDocument* document) const;
  /// Not to be used: logs an ERROR line and returns null.
  TarnDomElement* clone(util::TarnFactory& factory) const override;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;
};

}  // namespace model
}  // namespace libtarn
