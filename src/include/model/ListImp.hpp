// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include <cstdint>
#include <string>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/ModelNode.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

/// Node class of List.
class TARN_API ListImp : public ModelNode, public List {
 public:
  ListImp(libDomXml::IMemoryPool* pool, util::TarnFactory& factory)
      : ModelNode(pool, factory, TAG_NAME) {}

  using ModelNode::clone;
  ListImp* clone() const override;
  ListImp* clone(util::TarnFactory& factory) const override;
  /// Not to be called: logs an ERROR line and returns null.
  ListImp* clone(libDomXml::IDomDocument* document) const;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  const char* getName() const override;
  std::string getId() const override;
  bool hasScalarValues() const override;
  Scalar* getScalarValues() const override;
  std::uint8_t addValue(Scalar& value) override;
  bool hasStructuredValues() const override;
  Structure* getStructuredValues() const override;
  std::uint8_t addValue(Structure& value) override;
  bool match(const List& pattern) const override;
  ListImp* getNextSiblingElement() const override;
  IElement* getFirstChildElement(const char* name) const override;
  void removeThisElement() override;

  /// Fills the component index of every item. Throws DuplicateElementException for two components
  /// of one name in an item.
  void rebuildIndexersAndDispatchToChildren();

 protected:
  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override;

 private:
  bool hasMatch(const Scalar& pattern) const;
  bool hasMatch(const Structure& pattern) const;
};

}  // namespace model
}  // namespace libtarn
