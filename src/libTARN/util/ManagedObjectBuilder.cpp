#include "libtarn/util/ManagedObjectBuilder.hpp"

#include "../model/TypedChildren.hpp"
#include "../text/attributeNames.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace util {

using model::DistinguishedName;
using model::LibTarnManagedObject;
using model::LibTarnManagedObjectImp;

namespace {

LibTarnManagedObject& makeObject(model::LibTarnDocument& document) {
  return static_cast<LibTarnManagedObjectImp&>(
      *document.getFactory().allocateTarnManagedObjectNode());
}

void setAttribute(LibTarnManagedObject& object, const char* name, const char* value) {
  model::implementation<LibTarnManagedObjectImp>(object).setAttribute(name, value);
}

}  // namespace

ManagedObjectBuilder::ManagedObjectBuilder(model::LibTarnDocument& document)
    : document_(document), object_(makeObject(document)) {
  setClass("#").setDistName("_-_").setVersion("#");
}

ManagedObjectBuilder& ManagedObjectBuilder::setClass(const char* className) {
  setAttribute(object_, model::CLASS_ATTRIBUTE, className);
  return *this;
}

// Not with the object's setDistName(), which accepts whole names only.
ManagedObjectBuilder& ManagedObjectBuilder::setDistName(const char* distName) {
  setAttribute(object_, DistinguishedName::ATTR_NAME, distName);
  return *this;
}

ManagedObjectBuilder& ManagedObjectBuilder::setVersion(const char* version) {
  setAttribute(object_, model::VERSION_ATTRIBUTE, version);
  return *this;
}

ManagedObjectBuilder& ManagedObjectBuilder::setOperation(
    LibTarnManagedObject::Operation operation) {
  object_.setOperation(operation);
  return *this;
}

bool ManagedObjectBuilder::addParameter(const char* name, const char* value) {
  return object_.addParameter(*document_.getFactory().createScalar(name, value)) == 0;
}

}  // namespace util
}  // namespace libtarn
