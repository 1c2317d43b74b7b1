// Installed for the node classes; hosts do not use it by name.
#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/TarnDomElement.hpp"

namespace libtarn {
namespace model {

/// What the node classes of elements that can be copied have in common.
///
/// It overrides nothing of the element interfaces: each node class does that itself, so that its
/// virtual functions stand in the order in which it declares them.
class TARN_API ModelNode : public TarnDomElement {
 protected:
  /// A detached element with the tag `tag` and no attributes, to be made in `pool`. `factory`
  /// makes the elements that are added to it.
  ModelNode(libDomXml::IMemoryPool* pool, util::TarnFactory& factory, const char* tag)
      : TarnDomElement(pool), factory_(factory) {
    xml_base::name(tag);
  }

  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override = 0;

  util::TarnFactory& factory_;
};

}  // namespace model
}  // namespace libtarn
