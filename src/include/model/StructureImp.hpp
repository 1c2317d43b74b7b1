// A node class; hosts include it only to derive from it or to cast to it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/ModelNode.hpp"
#include "libtarn/model/Structure.hpp"
#include "libtarn/model/indexation/ITarnUniqueIndex.hpp"

namespace libDomXml {
class IDomDocument;
}

namespace libtarn {
namespace model {

struct Internals;
class ScalarImp;

namespace indexation {
class ITarnIndexFactory;
}

/// Node class of Structure.
class TARN_API StructureImp : public ModelNode, public Structure {
 public:
  StructureImp(libDomXml::IMemoryPool* pool, const indexation::ITarnIndexFactory* indexFactory,
               util::TarnFactory& factory);

  using ModelNode::clone;
  StructureImp* clone() const override;
  StructureImp* clone(util::TarnFactory& factory) const override;
  /// Not to be called: logs an ERROR line and returns null.
  StructureImp* clone(libDomXml::IDomDocument* document) const;
  void dispatchToChildren(validation::Validator& validator) const override;
  void dispatchToSelf(validation::Validator& validator) const override;
  void updatePath(validation::Validator& validator) const override;

  bool hasComponent(const std::string& name) const override;
  Scalar* getComponent(const std::string& name) const override;
  indexation::ScalarCollection getComponents() const override;
  std::uint8_t addComponent(Scalar& component) override;
  bool match(const Structure& pattern) const override;
  StructureImp* getNextSiblingElement() const override;
  IElement* getFirstChildElement(const char* name) const override;
  void removeThisElement() override;

  /// Adds the `p` children to the component index. Throws DuplicateElementException for the second
  /// of one name; those before it stay indexed.
  void rebuildIndexers();

 protected:
  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override;
  void finishCopy() override;

 private:
  friend struct Internals;

  const ScalarImp* indexComponents();
  std::string parentText() const;
  [[noreturn]] static void throwDuplicate(const std::string& parent, const ScalarImp& component);
  bool hasMatch(const Scalar& pattern) const;

  const indexation::ITarnIndexFactory* indexFactory_;
  indexation::ITarnUniqueIndex<Scalar>* componentIndex_;
};

}  // namespace model
}  // namespace libtarn
