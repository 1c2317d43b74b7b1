// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/ModelNode.hpp"
#include "libtarn/model/Scalar.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

/// Node class of Scalar.
class TARN_API ScalarImp : public ModelNode, public Scalar {
 public:
  ScalarImp(libDomXml::IMemoryPool* pool, util::TarnFactory& factory)
      : ModelNode(pool, factory, TAG_NAME) {}

  using ModelNode::clone;
  ScalarImp* clone() const override;
  ScalarImp* clone(util::TarnFactory& factory) const override;
  /// Not to be called: logs an ERROR line and returns null.
  ScalarImp* clone(libDomXml::IDomDocument* document) const;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  const char* getName() const override;
  std::string getId() const override;
  bool match(const Scalar& pattern) const override;
  bool isValueEmpty() const override;
  const char* getValue() const override;
  void setValue(const char* value) override;
  ScalarImp* getNextSiblingElement() const override;
  IElement* getFirstChildElement(const char* name) const override;
  void removeThisElement() override;

 protected:
  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override;
};

}  // namespace model
}  // namespace libtarn
