#include "documents/assignValue.hpp"

#include <variant>

#include "libtarn/model/LibTarnExtension.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace tarn {

using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnExtension;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;

bool isBlank(const std::string& value) {
  return !value.empty() && value.find_first_not_of(" \t\r\n") == std::string::npos;
}

Assigned assignValue(const ValuePath& path, const std::string& value,
                     LibTarnManagedObject& object) {
  const ValuePath::Place place = path.find(object);
  if (std::holds_alternative<std::monostate>(place)) return Assigned::Lacking;
  Scalar* const* const scalar = std::get_if<Scalar*>(&place);
  if (std::holds_alternative<List*>(place)) return Assigned::IsList;
  if (!scalar) return Assigned::IsItem;
  if (value == (*scalar)->getValue()) return Assigned::Equal;
  (*scalar)->setValue(value.c_str());
  return Assigned::Changed;
}

std::string severalValuesMessage(Assigned assigned, const std::string& path) {
  const bool isItem = assigned == Assigned::IsItem;
  return "'" + path + "' is " + (isItem ? "an item; " : "a list; ") + path +
         (isItem ? ".COMPONENT" : "[1]") + " is one value of it";
}

bool createValue(const ValuePath& path, bool isName, const std::string& value,
                 LibTarnManagedObject& object, LibTarnDocument& document) {
  const auto make = [&](const std::string& name) -> Scalar& {
    return *document.getFactory().createScalar(name.c_str(), value.c_str());
  };
  for (const ValuePath::InExtension& each : path.inExtensions()) {
    LibTarnExtension* const extension = object.getExtension(each.extension);
    if (extension) return extension->addParameter(make(each.parameter)) == 0;
  }
  const bool isPlain = path.text().find_first_of(".[]") == std::string::npos;
  return (isPlain || isName) && object.addParameter(make(path.text())) == 0;
}

}  // namespace tarn
