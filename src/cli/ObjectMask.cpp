#include "ObjectMask.hpp"

#include "CommandError.hpp"
#include "model/DistinguishedName.hpp"
#include "model/LibTarnManagedObject.hpp"
#include "model/TarnDomElement.hpp"

namespace tarn {

using libtarn::model::DistinguishedName;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::TarnDomElement;

LibTarnManagedObject& ObjectMask::build(libtarn::util::TarnFactory& factory) const {
  // Set as attributes: a part of a name need not be a valid name.
  TarnDomElement& element = *factory.allocateTarnManagedObjectNode();
  element.setAttribute("class", className.c_str());
  element.setAttribute(DistinguishedName::ATTR_NAME, distName.c_str());
  element.setAttribute("version", "#");

  auto& mask = dynamic_cast<LibTarnManagedObject&>(element);
  for (const std::string& parameter : parameters) {
    const std::size_t equals = parameter.find('=');
    if (equals == std::string::npos || equals == 0) {
      throw CommandError(Status::UsageError,
                         "tarn: error: --p takes NAME=VALUE, not '" + parameter + "'");
    }
    const std::string name = parameter.substr(0, equals);
    const std::string value = parameter.substr(equals + 1);
    if (mask.addParameter(*factory.createScalar(name.c_str(), value.c_str())) != 0) {
      throw CommandError(Status::UsageError,
                         "tarn: error: --p names '" + name + "' more than once");
    }
  }
  return mask;
}

}  // namespace tarn
