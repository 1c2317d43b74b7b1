#include "documents/Changer.hpp"

#include <utility>
#include <variant>

#include "CommandError.hpp"
#include "documents/Selection.hpp"
#include "documents/ValueText.hpp"
#include "documents/assignValue.hpp"
#include "documents/requireXmlText.hpp"
#include "libtarn/model/Diagnostic.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/util/ManagedObjectBuilder.hpp"
#include "libtarn/util/TarnFactory.hpp"
#include "output/HostLog.hpp"
#include "output/operationText.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::ChangeResult;
using libtarn::model::Diagnostic;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::util::ManagedObjectBuilder;

namespace {

const LibTarnManagedObject& patternOf(Document& document, const std::string& distName) {
  return ManagedObjectBuilder(document).setDistName(distName.c_str()).get();
}

ValuePath::Place find(const LibTarnManagedObject& object, const std::string& name, bool isList) {
  if (isList) {
    List* const list = object.getListParameter(name);
    return list ? ValuePath::Place(list) : ValuePath::Place();
  }
  Scalar* const scalar = object.getScalarParameter(name.c_str());
  return scalar ? ValuePath::Place(scalar) : ValuePath::Place();
}

// What values change beside parameters and lists.
std::vector<std::string> attributesOf(const LibTarnManagedObject& object) {
  return {textOrEmpty(object.getDistName().getText()), textOrEmpty(object.getClass()),
          textOrEmpty(object.getVersion()), operationText(object)};
}

// "#" would mean no change.
void requireAttribute(const std::string& option, const std::string& text) {
  requireXmlText(option, text, "\t\r\n");
  if (text == ANY_TEXT) throwUsageError(option + " cannot take " + ANY_TEXT);
}

}  // namespace

Changer::Changer(const Changes& changes, const Selector& selector, const std::string& path)
    : path_(path), creates_(changes.create), counts_(path, "set") {
  for (const std::string& value : changes.values) readAssignment(value);
  makeAttributes(changes);
  if (changes.file.empty()) return;
  values_.emplace(changes.file);
  readValues(selector);
}

void Changer::readAssignment(const std::string& text) {
  ValueText reader("--set", text);
  const std::string name = reader.readName();
  const bool isQuoted = reader.wasQuoted();
  if (reader.readOperator() != "=") {
    reader.refuse("takes NAME=VALUE; quote a name or a value that holds one of = ! < > ~");
  }
  for (const Assignment& other : assignments_) {
    if (other.path.text() == name) throwUsageError("--set sets '" + name + "' more than once");
  }
  const std::string value = reader.readExactValue();
  requireXmlText("--set", name, "\t\r\n");
  requireXmlText("--set", value, "\r");
  if (isBlank(value)) {
    throwUsageError("--set: a value of blanks alone is read as an empty one", text, 0);
  }
  assignments_.push_back({ValuePath(name), isQuoted, value, counts_.addValue(name)});
}

void Changer::makeAttributes(const Changes& changes) {
  if (!changes.className && !changes.version) return;
  ManagedObjectBuilder builder(own_);
  if (changes.className) {
    requireAttribute("--set-class", *changes.className);
    builder.setClass(changes.className->c_str());
  }
  if (changes.version) {
    requireAttribute("--set-version", *changes.version);
    builder.setVersion(changes.version->c_str());
  }
  attributes_ = &builder.get();
  anything_ = &patternOf(own_, ANY_NAME);
}

void Changer::readValues(const Selector& selector) {
  const LibTarnManagedObject& values = values_->object();
  for (const auto& entry : values.getScalarParameters()) {
    const std::string name(entry.first);
    newValues_.push_back({name, entry.second->getValue(), false, counts_.addValue(name)});
  }
  for (const auto& entry : values.getListParameters()) {
    const std::string name(entry.first);
    newValues_.push_back({name, textAt(entry.second), true, counts_.addValue(name)});
  }
  const std::string& part = selector.namePart();
  pattern_ = selector.mask() ? selector.mask() : &patternOf(own_, part.empty() ? ANY_NAME : part);
}

void Changer::change(LibTarnManagedObject& object, Document& document) {
  counts_.beginObject();
  for (const Assignment& assignment : assignments_) assign(assignment, object, document);
  if (attributes_) setAttributes(object);
  if (values_) changeToValues(object);
  counts_.endObject();
}

void Changer::assign(const Assignment& assignment, LibTarnManagedObject& object,
                     Document& document) {
  const Assigned assigned = assignValue(assignment.path, assignment.value, object);
  if (assigned == Assigned::Equal) return counts_.noteEqual();
  if (assigned == Assigned::Changed) return counts_.noteChanged();
  if (assigned == Assigned::IsList || assigned == Assigned::IsItem) {
    throw CommandError(Status::NothingMatched,
                       subjectOf(path_, textOrEmpty(object.getDistName().getText())),
                       severalValuesMessage(assigned, assignment.path.text()));
  }
  const bool isCreated = creates_ && createValue(assignment.path, assignment.isQuoted,
                                                 assignment.value, object, document);
  isCreated ? counts_.noteChanged() : counts_.noteLacking(assignment.number);
}

void Changer::setAttributes(LibTarnManagedObject& object) {
  if (applyAndCount(*anything_, *attributes_, object) == 0) counts_.noteEqual();
}

void Changer::changeToValues(LibTarnManagedObject& object) {
  std::vector<const NewValue*> lacking;
  for (const NewValue& value : newValues_) {
    const ValuePath::Place place = find(object, value.name, value.isList);
    const bool isThere = !std::holds_alternative<std::monostate>(place);
    if (!isThere && !creates_) {
      lacking.push_back(&value);
      counts_.noteLacking(value.number);
    } else if (isThere && textAt(place) == value.text) {
      counts_.noteEqual();
    } else {
      counts_.noteChanged();
    }
  }
  applyAndCount(*pattern_, lacking.empty() ? values_->object() : valuesWithout(lacking), object);
}

// Returns how many attributes have changed.
std::size_t Changer::applyAndCount(const LibTarnManagedObject& pattern,
                                   const LibTarnManagedObject& values,
                                   LibTarnManagedObject& object) {
  const std::vector<std::string> before = attributesOf(object);
  apply(pattern, values, object);
  const std::vector<std::string> after = attributesOf(object);
  std::size_t changed = 0;
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (before[i] == after[i]) continue;
    counts_.noteChanged();
    ++changed;
  }
  return changed;
}

const LibTarnManagedObject& Changer::valuesWithout(const std::vector<const NewValue*>& lacking) {
  std::string key;
  for (const NewValue* value : lacking) key += std::to_string(value->number) + " ";
  LibTarnManagedObject*& values = valuesWithout_[key];
  if (values) return *values;
  values = own_.getFactory().createCopy(values_->object());
  for (const NewValue* value : lacking) {
    if (value->isList) {
      values->removeListParameter(value->name);
    } else {
      values->removeScalarParameter(value->name);
    }
  }
  return *values;
}

void Changer::apply(const LibTarnManagedObject& pattern, const LibTarnManagedObject& values,
                    LibTarnManagedObject& object) const {
  const std::string subject = subjectOf(path_, textOrEmpty(object.getDistName().getText()));
  const Diagnostic refusal = object.tryChange(pattern, values);
  if (refusal.code == ChangeResult::Done) return;
  HostLog::takeError();  // what the refusal says, too
  if (refusal.code == ChangeResult::NameTaken) {
    throw CommandError(Status::Conflict, subject, "two objects would have one name");
  }
  throw CommandError(Status::RuleBroken, subject, refusal.message);
}

}  // namespace tarn
