// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/LibTarnExtension.hpp"
#include "libtarn/model/ModelNode.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/UniqueContainer.hpp"

namespace libtarn {
namespace model {

/// Node class of LibTarnExtension.
class TARN_API LibTarnExtensionImp : public LibTarnExtension, public ModelNode {
 public:
  LibTarnExtensionImp(libDomXml::IMemoryPool* pool, util::TarnFactory& factory);

  LibTarnExtensionImp* getNextSiblingElement() const override;
  IElement* getFirstChildElement(const char* name) const override;
  void removeThisElement() override;
  const char* getName() const override;
  bool hasParameters() const override;
  Scalar* getParameters() const override;
  std::uint8_t addParameter(Scalar& parameter) override;
  bool hasParameter(const std::string& name) const override;
  Scalar* getParameter(const std::string& name) const override;
  std::uint8_t removeParameter(const std::string& name) override;

  using ModelNode::clone;
  LibTarnExtensionImp* clone() const override;
  LibTarnExtensionImp* clone(util::TarnFactory& factory) const override;
  /// Not to be called: logs an ERROR line and returns null.
  LibTarnExtensionImp* clone(libDomXml::IDomDocument* document) const;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  /// Returns the name, "" when there is none.
  std::string getId() const;

 protected:
  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override;

 private:
  UniqueContainer<LibTarnExtensionImp, ScalarImp, std::string> parameters_;
};

}  // namespace model
}  // namespace libtarn
