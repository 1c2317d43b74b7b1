#include "documents/Selection.hpp"

#include <fmt/format.h>
#include <fnmatch.h>

#include <algorithm>
#include <cstring>

#include "CommandError.hpp"
#include "documents/nameList.hpp"
#include "documents/walkObjects.hpp"
#include "libtarn/model/LibTarnCmData.hpp"
#include "output/operationText.hpp"
#include "output/terminal.hpp"
#include "text/naturalOrder.hpp"
#include "textOrEmpty.hpp"

namespace tarn {

using libtarn::model::LibTarnCmData;
using libtarn::model::LibTarnManagedObject;

namespace {

// Of the names that are reported as missing.
constexpr std::size_t MOST_MISSING = 10;

const char* nameOf(const LibTarnManagedObject& object) {
  return textOrEmpty(object.getDistName().getText());
}

bool isOfClass(const std::string& wanted, const LibTarnManagedObject& object) {
  return wanted == textOrEmpty(object.getClass());
}

bool isOfVersion(const std::string& wanted, const LibTarnManagedObject& object) {
  return wanted == textOrEmpty(object.getVersion());
}

bool hasOperation(const std::string& wanted, const LibTarnManagedObject& object) {
  return object.hasOperation() ? wanted == object.getOperation().toString() : wanted == "none";
}

bool isAtOrUnder(const std::string& wanted, const LibTarnManagedObject& object) {
  const char* const name = nameOf(object);
  return std::strncmp(name, wanted.c_str(), wanted.size()) == 0 &&
         (name[wanted.size()] == '\0' || name[wanted.size()] == '/');
}

bool hasInName(const std::string& wanted, const LibTarnManagedObject& object) {
  return std::strstr(nameOf(object), wanted.c_str()) != nullptr;
}

// * and ? match no "/", as in the names of files.
bool matchesGlob(const std::string& wanted, const LibTarnManagedObject& object) {
  return ::fnmatch(wanted.c_str(), nameOf(object), FNM_PATHNAME) == 0;
}

void refuseEmpty(const char* option, const std::vector<std::string>& values) {
  for (const std::string& value : values) {
    if (value.empty()) throwUsageError(std::string(option) + " takes a text that is not empty");
  }
}

}  // namespace

bool Selection::isEmpty() const {
  return classes.empty() && distNames.empty() && distNamesFile.empty() && above.empty() &&
         nameParts.empty() && globs.empty() && versions.empty() && operations.empty() &&
         conditions.empty() && maskFile.empty();
}

Selector::Selector(const Selection& selection) : invert_(selection.invert) {
  if (invert_ && selection.isEmpty()) throwUsageError("--invert needs an option that selects");
  refuseEmpty("--under", selection.above);
  refuseEmpty("--dn-has", selection.nameParts);
  addOption("--class", selection.classes, isOfClass);
  addOption("--under", selection.above, isAtOrUnder);
  addOption("--dn-has", selection.nameParts, hasInName);
  addOption("--match", selection.globs, matchesGlob);
  addOption("--version", selection.versions, isOfVersion);
  addOption("--operation", selection.operations, hasOperation);
  for (const std::string& text : selection.conditions) {
    conditions_.push_back({Condition(text), false});
  }
  addNames(selection);
  if (!selection.maskFile.empty()) mask_.emplace(selection.maskFile);
  if (selection.nameParts.size() == 1) namePart_ = selection.nameParts.front();
}

void Selector::addOption(const char* name, const std::vector<std::string>& values, Test isMet) {
  if (values.empty()) return;
  options_.push_back({name, isMet, {}});
  for (const std::string& value : values) options_.back().wanted.push_back({value});
}

void Selector::addNames(const Selection& selection) {
  hasNames_ = !selection.distNames.empty() || !selection.distNamesFile.empty();
  const auto add = [this](const std::string& name) {
    if (exactNames_.count(name) > 0) return;
    names_.push_back({name});
    exactNames_.emplace(names_.back().text, &names_.back());
  };
  for (const std::string& name : selection.distNames) add(name);
  if (selection.distNamesFile.empty()) return;
  for (const std::string& name : readNameList(selection.distNamesFile)) add(name);
}

bool Selector::selects(const LibTarnManagedObject& object) {
  const bool isNamed = !hasNames_ || meetsName(object);
  const bool isMet = meetsOthers(object) && isNamed;
  meetsAll_ = meetsAll_ || isMet;
  return isMet != invert_;
}

Selector::Objects Selector::select(const Document& document) {
  Objects selected;
  for (LibTarnManagedObject* object = firstObject(document); object;
       object = object->getNextSiblingElement()) {
    if (selects(*object)) selected.push_back(object);
  }
  return selected;
}

// The names that contain one of a few missing names are counted for the report.
bool Selector::meetsName(const LibTarnManagedObject& object) {
  const auto found = exactNames_.find(nameOf(object));
  const bool isNamed = found != exactNames_.end();
  if (isNamed) found->second->isMet = true;
  if (names_.size() > MOST_MISSING) return isNamed;
  for (Wanted& name : names_) {
    if (!name.isMet && !name.text.empty() && hasInName(name.text, object)) ++name.namesWithIt;
  }
  return isNamed;
}

// Asks on for values that no object has met yet, also when the answer is known: a value that only
// such objects meet as meet another one, too, is there.
bool Selector::meetsOne(Option& option, const LibTarnManagedObject& object) {
  bool isMet = false;
  for (Wanted& wanted : option.wanted) {
    if (isMet && wanted.isMet) continue;
    if (!option.isMet(wanted.text, object)) continue;
    wanted.isMet = true;
    isMet = true;
  }
  return isMet;
}

bool Selector::hasUnmet(const Option& option) {
  return std::any_of(option.wanted.begin(), option.wanted.end(),
                     [](const Wanted& wanted) { return !wanted.isMet; });
}

bool Selector::meetsOthers(const LibTarnManagedObject& object) {
  bool isMet = true;
  for (Option& option : options_) {
    if (isMet || hasUnmet(option)) isMet = meetsOne(option, object) && isMet;
  }
  if (!isMet) return false;
  meetsOptions_ = true;
  for (WantedValue& value : conditions_) {
    if (!isMet && value.isThere) continue;
    const Condition::Answer answer = value.condition.ask(object);
    if (answer != Condition::Answer::NoSuchValue) value.isThere = true;
    if (answer != Condition::Answer::Yes) isMet = false;
  }
  return isMet && (!mask_ || object.match(mask_->object()));
}

void Selector::requireFound(const std::string& subject, std::size_t count) const {
  requireMet(subject);
  if (invert_ && !meetsAll_) {
    throw CommandError(Status::NothingMatched, subject,
                       "no object meets all options, so that --invert would select every object");
  }
  if (count == 0) throw CommandError(Status::NothingMatched, subject, "no object matches");
}

void Selector::requireMet(const std::string& subject) const {
  requireNames(subject);
  for (const Option& option : options_) {
    for (const Wanted& wanted : option.wanted) {
      if (wanted.isMet) continue;
      throw CommandError(Status::NothingMatched, subject,
                         fmt::format("no object meets {} '{}'", option.name, wanted.text));
    }
  }
  for (const WantedValue& value : conditions_) {
    if (value.isThere || !meetsOptions_) continue;
    throw CommandError(
        Status::NothingMatched, subject,
        fmt::format("{} has a value '{}'", options_.empty() ? "no object" : "none of those objects",
                    value.condition.path().text()));
  }
}

// Reports all but the last one, which is thrown.
void Selector::requireNames(const std::string& subject) const {
  std::vector<CommandError> errors;
  std::size_t missing = 0;
  for (const Wanted& name : names_) {
    if (name.isMet || ++missing > MOST_MISSING) continue;
    std::string message = "no such object";
    if (name.namesWithIt > 0) {
      message += fmt::format("; --dn-has '{}' selects the {} with this text in the name", name.text,
                             name.namesWithIt);
    }
    if (name.text.empty()) {
      errors.emplace_back(Status::NothingMatched, subject, "there is no object without a name");
    } else {
      errors.emplace_back(Status::NothingMatched, subjectOf(subject, name.text), message);
    }
  }
  if (missing > MOST_MISSING) {
    errors.emplace_back(Status::NothingMatched, subject,
                        fmt::format("no such object: {} more names", missing - MOST_MISSING));
  }
  if (errors.empty()) return;
  for (std::size_t i = 0; i + 1 < errors.size(); ++i) reportError(errors[i].what());
  throw CommandError(errors.back());
}

Selector::Objects loadSelected(const std::string& path, const Selection& selection,
                               Document& document) {
  Selector selector(selection);
  loadDocument(path, document);
  Selector::Objects objects = selector.select(document);
  selector.requireFound(path, objects.size());
  return objects;
}

void sortByName(Selector::Objects& objects, NameOrder order) {
  const auto isBefore = [order](const LibTarnManagedObject* a, const LibTarnManagedObject* b) {
    return order == NameOrder::Bytes ? std::strcmp(nameOf(*a), nameOf(*b)) < 0
                                     : isNaturallyBefore(nameOf(*a), nameOf(*b));
  };
  if (!std::is_sorted(objects.begin(), objects.end(), isBefore)) {
    std::sort(objects.begin(), objects.end(), isBefore);
  }
}

}  // namespace tarn
