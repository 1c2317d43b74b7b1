// Installed for the node classes; hosts do not use it by name.
#pragma once

#include "libtarn/TarnApi.hpp"
#include "libtarn/model/TarnDomElement.hpp"

namespace libtarn {
namespace model {

/// Base of the node classes whose elements can be copied: what they have in common.
///
/// It overrides no function of the element interfaces. Each node class does that itself, so that
/// its virtual functions have the order in which it declares them.
class TARN_API ModelNode : public TarnDomElement {
 protected:
  /// A detached element with the tag `tag` and no attributes, for placement in `pool`. `factory`
  /// makes the elements that are added to it.
  ModelNode(libDomXml::IMemoryPool* pool, util::TarnFactory& factory, const char* tag)
      : TarnDomElement(pool), factory_(factory) {
    xml_base::name(tag);
  }

  libDomXml::ElementCopy copySelf(util::TarnFactory& factory) const override = 0;

  /// The factory of the element's document.
  util::TarnFactory& factory_;
};

}  // namespace model
}  // namespace libtarn
