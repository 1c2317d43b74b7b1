#include "ObjectPattern.hpp"

#include "CommandError.hpp"
#include "documentFile.hpp"
#include "model/LibTarnCmData.hpp"
#include "util/ManagedObjectBuilder.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;
using libtarn::util::ManagedObjectBuilder;
using Operation = LibTarnManagedObject::Operation;

namespace {

constexpr const char* ANY_VALUE = "#";

// `text` is one of the operations; the command line takes no other.
Operation operationOf(const std::string& text) {
  return Operation(*Operation::getStringToEnum().at(text));
}

}  // namespace

bool PatternOptions::saysNothing() const {
  const PatternOptions none;
  return className == none.className && distName == none.distName && version == none.version &&
         operation.empty() && parameters.empty() && file.empty();
}

ObjectPattern ObjectPattern::mask(const PatternOptions& options) {
  ObjectPattern pattern;
  if (options.file.empty()) {
    pattern.build(options, ANY_VALUE);
  } else {
    pattern.load(options.file);
  }
  return pattern;
}

ObjectPattern ObjectPattern::values(const PatternOptions& options) {
  ObjectPattern pattern;
  if (options.file.empty()) {
    pattern.build(options, nullptr);
  } else {
    pattern.load(options.file);
  }
  return pattern;
}

void ObjectPattern::load(const std::string& path) {
  loadDocument(path, *document_);
  const LibTarnCmData* const cmData = document_->getLibTarnCmData();
  if (cmData) {
    object_ = dynamic_cast<const LibTarnManagedObject*>(
        cmData->getFirstChildElement(LibTarnManagedObject::TAG_NAME));
  }
  if (!object_) throw CommandError(Status::RuleBroken, path, "holds no managed object");
}

// A null `valueOfBareName` refuses a parameter without a value.
void ObjectPattern::build(const PatternOptions& options, const char* valueOfBareName) {
  ManagedObjectBuilder builder(*document_);
  builder.setClass(options.className.c_str())
      .setDistName(options.distName.c_str())
      .setVersion(options.version.c_str());
  if (!options.operation.empty()) builder.setOperation(operationOf(options.operation));
  for (const std::string& parameter : options.parameters) {
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
  object_ = &builder.get();
}

// Without a mask nothing is compared, which would cost more than the look at an object.
std::vector<LibTarnManagedObject*> loadMatching(const std::string& path, const PatternOptions& mask,
                                                libtarn::model::LibTarnDocument& document) {
  const ObjectPattern pattern = ObjectPattern::mask(mask);
  loadDocument(path, document);
  std::vector<LibTarnManagedObject*> objects;
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  if (cmData && mask.saysNothing()) {
    const auto all = cmData->getLibTarnManagedObjects();
    objects.assign(all.begin(), all.end());
  } else {
    const auto matching = document.getMOsMatchingMask(pattern.object());
    objects.assign(matching.begin(), matching.end());
  }
  if (objects.empty()) throw CommandError(Status::NothingMatched, path, "no object matches");
  return objects;
}

}  // namespace tarn
