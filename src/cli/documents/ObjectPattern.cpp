#include "documents/ObjectPattern.hpp"

#include <vector>

#include "CommandError.hpp"
#include "documents/Changes.hpp"
#include "documents/Selection.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "libtarn/util/Enum.hpp"
#include "libtarn/util/ManagedObjectBuilder.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;
using libtarn::util::ManagedObjectBuilder;
using Operation = LibTarnManagedObject::Operation;

namespace {

// `text` is the name of an operation: the command line accepts no other.
Operation operationOf(const std::string& text) {
  return Operation(*Operation::getStringToEnum().at(text));
}

// With null for `valueOfBareName` a parameter must have a value.
void addParameters(const std::vector<std::string>& parameters, const char* valueOfBareName,
                   ManagedObjectBuilder& builder) {
  for (const std::string& parameter : parameters) {
    const std::size_t equals = parameter.find('=');
    const bool hasValue = equals != std::string::npos;
    const std::string name = parameter.substr(0, equals);
    if (name.empty() || (!hasValue && !valueOfBareName)) {
      throwUsageError("--p takes NAME=VALUE, not '" + parameter + "'");
    }
    const std::string value = hasValue ? parameter.substr(equals + 1) : valueOfBareName;
    if (!builder.addParameter(name.c_str(), value.c_str())) {
      throwUsageError("--p names '" + name + "' more than once");
    }
  }
}

}  // namespace

ObjectPattern::ObjectPattern(const Selection& selection)
    : object_(selection.file.empty() ? build(selection) : load(selection.file)) {}

ObjectPattern::ObjectPattern(const Changes& changes)
    : object_(changes.file.empty() ? build(changes) : load(changes.file)) {}

const LibTarnManagedObject& ObjectPattern::load(const std::string& path) {
  loadDocument(path, document_);
  if (const LibTarnCmData* const cmData = document_.getLibTarnCmData()) {
    const auto* const object = dynamic_cast<const LibTarnManagedObject*>(
        cmData->getFirstChildElement(LibTarnManagedObject::TAG_NAME));
    if (object) return *object;
  }
  throw CommandError(Status::RuleBroken, path, "holds no managed object");
}

const LibTarnManagedObject& ObjectPattern::build(const Selection& selection) {
  ManagedObjectBuilder builder(document_);
  builder.setClass(selection.className.c_str())
      .setDistName(selection.distName.c_str())
      .setVersion(selection.version.c_str());
  if (!selection.operation.empty()) builder.setOperation(operationOf(selection.operation));
  addParameters(selection.parameters, ANY_TEXT, builder);
  return builder.get();
}

const LibTarnManagedObject& ObjectPattern::build(const Changes& changes) {
  ManagedObjectBuilder builder(document_);
  builder.setClass(changes.className.c_str())
      .setDistName(ANY_NAME)
      .setVersion(changes.version.c_str());
  addParameters(changes.parameters, nullptr, builder);
  return builder.get();
}

}  // namespace tarn
