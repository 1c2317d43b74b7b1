// The operations on objects of different names are independent of one another. So the objects of
// all deltas are sorted by name, and what happens to each name is played through at once: what the
// source has, then one delta after the other.
//
// An object of the source that is updated is not copied. Only what the deltas have for it is
// compared with what it has. A delta's element counts as its own copy when the copy is certain to
// hold the same; otherwise the copy is made, in a document of the plan. An object that a delta
// creates and a later one updates is such a copy, too, which is then updated.

#include "libtarn/editor/TarnPlan.hpp"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <optional>
#include <string_view>
#include <utility>

#include "../model/Internals.hpp"
#include "../model/TypedChildren.hpp"
#include "../model/UndoLog.hpp"
#include "../text/patternText.hpp"
#include "../util/LogLocation.hpp"
#include "Changes.hpp"
#include "Comparison.hpp"
#include "copiedAsIs.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/editor/exceptions/EditorException.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/ResultCodes.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/exceptions/ModelException.hpp"
#include "libtarn/util/Logger.hpp"
#include "libtarn/util/TarnFactory.hpp"

namespace libtarn {
namespace editor {

using model::LibTarnCmDataImp;
using model::LibTarnDocument;
using model::LibTarnExtensionImp;
using model::LibTarnManagedObject;
using model::ListImp;
using model::ScalarImp;
using model::exceptions::ModelException;
using Object = model::LibTarnManagedObjectImp;
using Operation = LibTarnManagedObject::Operation;

namespace {

LibTarnCmDataImp* bodyOf(const LibTarnDocument& document) {
  model::LibTarnCmData* const cmData = document.getLibTarnCmData();
  return cmData ? &model::implementation<LibTarnCmDataImp>(*cmData) : nullptr;
}

/// An object of a delta.
struct Step {
  std::string_view name;
  std::size_t delta;
  Object* object;
};

bool isBefore(const Step& a, const Step& b) { return a.name < b.name; }

/// An element that updates bring for a name.
template <class Imp>
struct Brought {
  const char* name;
  const Imp* element;

  bool hasNameOf(const Brought& other) const { return std::strcmp(name, other.name) == 0; }
  bool isBefore(const Brought& other) const { return std::strcmp(name, other.name) < 0; }
};

/// A parameter or list, and the source's of that name, or null.
template <class Imp, class Element>
struct Replacement : Brought<Imp> {
  const Element* current;
};

template <class Imp>
using AllBrought = std::vector<Brought<Imp>>;

// Sorts by name; the order of equal names stays.
template <class Entry>
void sortByName(std::vector<Entry>& all) {
  const auto before = [](const Entry& a, const Entry& b) { return a.isBefore(b); };
  if (std::is_sorted(all.begin(), all.end(), before)) return;
  std::stable_sort(all.begin(), all.end(), before);
}

// Keeps the last one of each name. They are sorted.
template <class Entry>
void keepLast(std::vector<Entry>& all) {
  auto kept = all.begin();
  for (auto each = all.begin(); each != all.end(); ++each) {
    const auto next = each + 1;
    if (next == all.end() || !next->hasNameOf(*each)) *kept++ = *each;
  }
  all.erase(kept, all.end());
}

// The parameters of an object in the order of their names, without following changes of the index.

model::indexation::ScalarCollection scalarsOf(const Object& object) {
  if (!model::Internals::isLibraryIndexed(object)) return object.getScalarParameters();
  const auto& index = model::Internals::scalarIndex(object);
  index.getCollection();  // sorts
  return index.getUnordered();
}

model::indexation::ListCollection listsOf(const Object& object) {
  if (!model::Internals::isLibraryIndexed(object)) return object.getListParameters();
  const auto& index = model::Internals::listIndex(object);
  index.getCollection();  // sorts
  return index.getUnordered();
}

/// Finds the parameters that a delta has in those of a source. Both are in the order of names, so
/// that most are found by a step or two in the source's; a look-up finds the others.
template <class Element>
class SourceParameters {
 public:
  using Collection = model::indexation::TarnCollection<model::indexation::ParameterEntry<Element>>;
  using LookUp = std::function<const Element*(const char*)>;

  SourceParameters(const Collection& collection, bool isInOrder, LookUp lookUp)
      : next_(collection.begin()),
        end_(collection.end()),
        follows_(isInOrder),
        lookUp_(std::move(lookUp)) {}

  /// Returns the parameter of the name, or null. Names come in their order.
  const Element* find(const char* name) {
    constexpr int MOST_STEPS = 8;
    for (int steps = 0; follows_; ++steps, ++next_) {
      if (next_ == end_) return nullptr;
      const int order = std::strcmp(next_->first, name);
      if (order > 0) return nullptr;
      if (order == 0) return next_->second;
      if (steps == MOST_STEPS) follows_ = false;
    }
    return lookUp_(name);
  }

 private:
  typename Collection::iterator next_;
  typename Collection::iterator end_;
  bool follows_;
  LookUp lookUp_;
};

/// What the updates of one object bring together.
struct Updates {
  std::vector<Replacement<ScalarImp, model::Scalar>> scalars;
  std::vector<Replacement<ListImp, model::List>> lists;
  AllBrought<LibTarnExtensionImp> extensions;

  std::size_t count = 0;  // of updates

  void clear() {
    count = 0;
    scalars.clear();
    lists.clear();
    extensions.clear();
  }
};

}  // namespace

namespace {

/// Plays the deltas through.
class Planner {
 public:
  struct Results {
    std::unique_ptr<LibTarnDocument>& copies;
    std::vector<TarnPlan::Conflict>& conflicts;
    std::vector<Difference>& differences;
    std::vector<TarnPlan::Omission>& omissions;
  };

  Planner(const LibTarnCmDataImp& source, const Results& results)
      : source_(source), results_(results), comparison_(results.differences, false) {}

  /// Plans what happens to one name.
  void plan(const Step* begin, const Step* end) {
    end_ = end;
    original_ = nullptr;
    LibTarnManagedObject* const found =
        source_.getLibTarnManagedObject(begin->object->getDistName());
    if (found) original_ = &model::implementation<Object>(*found);
    current_ = original_;
    isMade_ = false;
    resolved_.clear();
    updates_.clear();
    for (const Step* step = begin; step != end; ++step) play(*step);
    compare();
  }

 private:
  void play(const Step& step) {
    const Operation operation = operationOf(step);
    const auto conflict = conflictOf(operation, current_ != nullptr, step.object->getDistName());
    if (conflict) return note(step, *conflict);
    try {
      if (operation == Operation::CREATE) {
        create(step);
      } else if (operation == Operation::DELETE) {
        current_ = nullptr;
      } else {
        update(step);
      }
    } catch (const ModelException& fault) {
      note(step, fault.what());
    }
  }

  void note(const Step& step, const std::string& reason) {
    results_.conflicts.push_back({step.delta, step.object,
                                  model::textOrEmpty(step.object->getDistName().getText()),
                                  reason});
  }

  // A merge replaces "auto" in its delta, and a document may be more than one of the deltas.
  Operation operationOf(const Step& step) {
    const Operation operation = step.object->getOperation();
    if (operation != Operation::AUTO) return operation;
    for (const auto& [object, wasThere] : resolved_) {
      if (object == step.object) return explicitOperation(wasThere);
    }
    const bool isThere = current_ != nullptr;
    if (&step + 1 != end_) resolved_.emplace_back(step.object, isThere);
    return explicitOperation(isThere);
  }

  void create(const Step& step) {
    const bool isLast = &step + 1 == end_;
    if (isLast && isCopiedAsIs(*step.object)) {
      current_ = step.object;
    } else {
      Object* const copy = step.object->clone(factory());
      copy->setOperation(Operation::CREATE);
      current_ = copy;
    }
    isMade_ = true;
  }

  void update(const Step& step) {
    if (isMade_) {
      model::UndoLog log;
      editor::update(factory(), *current_, *step.object, log);
      log.keep();
    } else {
      bring(step);
    }
    noteOmission(step, Difference::Part::Class, current_->getClass(), step.object->getClass());
    noteOmission(step, Difference::Part::Version, current_->getVersion(),
                 step.object->getVersion());
  }

  void noteOmission(const Step& step, Difference::Part part, const char* kept,
                    const char* omitted) {
    if (!omitted || model::isSameText(kept, omitted)) return;
    results_.omissions.push_back({step.delta, step.object,
                                  model::textOrEmpty(step.object->getDistName().getText()), part,
                                  kept, omitted});
  }

  // Updates of an object of the source

  // What has been brought stays only if all of it can be copied.
  void bring(const Step& step) {
    const std::size_t scalars = updates_.scalars.size();
    const std::size_t lists = updates_.lists.size();
    try {
      bringAll(*step.object);
    } catch (const ModelException&) {
      // Extensions come last, so that a copy that throws has brought none.
      updates_.scalars.resize(scalars);
      updates_.lists.resize(lists);
      throw;
    }
  }

  void bringAll(const Object& delta) {
    ++updates_.count;
    const bool isInOrder = model::Internals::isLibraryIndexed(*original_);
    SourceParameters<model::Scalar> scalars(
        scalarsOf(*original_), isInOrder,
        [this](const char* name) { return original_->getScalarParameter(name); });
    for (const auto& [name, scalar] : scalarsOf(delta)) {
      const auto& element = model::implementation<ScalarImp>(*scalar);
      const model::Scalar* const current = scalars.find(name);
      updates_.scalars.push_back({{name, current ? &element : copied(element)}, current});
    }
    SourceParameters<model::List> lists(listsOf(*original_), isInOrder, [this](const char* name) {
      return original_->getListParameter(name);
    });
    for (const auto& [name, list] : listsOf(delta)) {
      const auto& element = model::implementation<ListImp>(*list);
      const model::List* const current = lists.find(name);
      updates_.lists.push_back({{name, copied(element)}, current});
    }
    bringExtensions(delta);
  }

  void bringExtensions(const Object& delta) {
    const std::size_t begin = updates_.extensions.size();
    collectExtensions(delta, extensions_);
    keepLast(extensions_);
    for (auto& each : extensions_) each.element = copied(*each.element);
    updates_.extensions.insert(updates_.extensions.end(), extensions_.begin(), extensions_.end());
    if (begin == 0) return;
    sortByName(updates_.extensions);
    keepLast(updates_.extensions);
  }

  static void collectExtensions(const Object& object, AllBrought<LibTarnExtensionImp>& all) {
    all.clear();
    for (auto* each = object.getExtensions(); each; each = each->getNextSiblingElement()) {
      all.push_back({model::textOrEmpty(each->getName()),
                     &model::implementation<LibTarnExtensionImp>(*each)});
    }
    sortByName(all);
  }

  template <class Imp>
  const Imp* copied(const Imp& element) {
    return isCopiedAsIs(element) ? &element : element.clone(factory());
  }

  // Differences

  bool isInTree() const { return original_ && original_->parent() == &source_; }

  void compare() {
    const Object* const before = isInTree() ? original_ : nullptr;
    if (isMade_ && current_) {
      before ? comparison_.compareObjects(*before, *current_)
             : comparison_.noteObject(nullptr, current_);
    } else if (before && !current_) {
      comparison_.noteObject(before, nullptr);
    } else if (before) {
      comparison_.enterObjects(before, before);
      compareScalars();
      compareLists();
      compareExtensions();
    }
  }

  template <class Imp, class Element>
  const Imp* childOf(Element* element) const {
    const Imp* const imp = element ? &model::implementation<Imp>(*element) : nullptr;
    return imp && imp->parent() == original_ ? imp : nullptr;
  }

  // Of a parameter that the source has, only the text changes.
  void compareScalars() {
    if (updates_.count > 1) sortByName(updates_.scalars);
    auto each = updates_.scalars.begin();
    while (each != updates_.scalars.end()) {
      const auto first = each++;
      if (updates_.count > 1) {
        while (each != updates_.scalars.end() && each->hasNameOf(*first)) ++each;
      }
      const ScalarImp& last = *each[-1].element;
      if (!first->current) {
        comparison_.compareParameters(nullptr, added(*first->element, last));
      } else if (const auto* const before = childOf<ScalarImp>(first->current)) {
        comparison_.compareParameterText(*before, last);
      }
    }
  }

  // The first update adds the parameter, a later one sets its text.
  const ScalarImp* added(const ScalarImp& first, const ScalarImp& last) {
    if (&first == &last) return &first;
    ScalarImp* const copy = first.clone(factory());
    copy->setValue(last.getValue());
    return copy;
  }

  void compareLists() {
    if (updates_.count > 1) {
      sortByName(updates_.lists);
      keepLast(updates_.lists);
    }
    for (const auto& each : updates_.lists) {
      comparison_.compareLists(childOf<ListImp>(each.current), each.element);
    }
  }

  // All of a name are replaced by one.
  void compareExtensions() {
    if (updates_.extensions.empty()) return;
    collectExtensions(*original_, extensions_);
    auto before = extensions_.begin();
    const auto end = extensions_.end();
    for (const auto& each : updates_.extensions) {
      while (before != end && before->isBefore(each)) ++before;
      const LibTarnExtensionImp* replacement = each.element;
      if (before == end || !before->hasNameOf(each)) {
        comparison_.compareExtensions(nullptr, replacement);
        continue;
      }
      for (; before != end && before->hasNameOf(each); ++before) {
        comparison_.compareExtensions(before->element, replacement);
        replacement = nullptr;
      }
    }
  }

  util::TarnFactory& factory() {
    if (!results_.copies) {
      results_.copies = std::make_unique<LibTarnDocument>(libDomXml::OutOfMemory::Throw);
    }
    return results_.copies->getFactory();
  }

  const LibTarnCmDataImp& source_;
  Results results_;
  Comparison comparison_;
  // Of the name that is being planned.
  const Step* end_ = nullptr;
  Object* original_ = nullptr;                            // of the source
  Object* current_ = nullptr;                             // after the steps played so far
  bool isMade_ = false;                                   // whether a step has created `current_`
  std::vector<std::pair<const Object*, bool>> resolved_;  // "auto", and whether it was there
  Updates updates_;
  AllBrought<LibTarnExtensionImp> extensions_;  // reused
};

// Both are in byte order of the names.
template <class Entry>
void sortByDelta(std::vector<Entry>& entries) {
  std::stable_sort(entries.begin(), entries.end(),
                   [](const Entry& a, const Entry& b) { return a.delta < b.delta; });
}

}  // namespace

TarnPlan::TarnPlan(LibTarnDocument& source, LibTarnDocument& delta)
    : TarnPlan(source, std::vector<LibTarnDocument*>{&delta}) {}

TarnPlan::TarnPlan(LibTarnDocument& source, std::vector<LibTarnDocument*> deltas)
    : source_(source), deltas_(std::move(deltas)) {
  plan();
}

TarnPlan::~TarnPlan() = default;

void TarnPlan::plan() {
  LibTarnCmDataImp* const source = bodyOf(source_);
  std::vector<Step> steps;
  for (std::size_t number = 0; number < deltas_.size(); ++number) {
    TARN_ASSERT(deltas_[number], "delta");
    const LibTarnCmDataImp* const delta = bodyOf(*deltas_[number]);
    const char* const reason = !source           ? NO_SOURCE_MESSAGE
                               : delta == source ? SAME_DOCUMENT_MESSAGE
                               : !delta          ? NO_DELTA_MESSAGE
                                                 : nullptr;
    if (reason) {
      conflicts_.push_back({number, nullptr, "", reason});
      continue;
    }
    for (LibTarnManagedObject* const object : delta->getLibTarnManagedObjects()) {
      const char* const name = model::textOrEmpty(object->getDistName().getText());
      steps.push_back({name, number, &model::implementation<Object>(*object)});
    }
  }
  if (!source || !hasDistinctNames(*source)) return;
  if (deltas_.size() > 1) std::stable_sort(steps.begin(), steps.end(), isBefore);
  Planner planner(*source, {copies_, conflicts_, differences_, omissions_});
  for (std::size_t begin = 0, end = 0; begin < steps.size(); begin = end) {
    while (end < steps.size() && steps[end].name == steps[begin].name) ++end;
    planner.plan(&steps[begin], &steps[begin] + (end - begin));
  }
  sortByDelta(conflicts_);
  sortByDelta(omissions_);
}

// An object that another one keeps out of the index would take the place of that one in a merge.
bool TarnPlan::hasDistinctNames(const LibTarnCmDataImp& source) {
  try {
    source.checkNames();
    return true;
  } catch (const ModelException& duplicate) {
    conflicts_.push_back({0, nullptr, "", duplicate.what()});
    return false;
  }
}

bool TarnPlan::refuse(const std::string& reason) {
  util::Logger(util::Logger::Level::ERROR, TARN_LOG_LOCATION, "apply") << reason;
  diagnostic_.code = model::EditResult::Refused;
  try {
    diagnostic_.message = reason;
  } catch (const std::bad_alloc&) {
    diagnostic_.message.clear();
  }
  return false;
}

bool TarnPlan::apply() {
  diagnostic_ = {};
  if (!conflicts_.empty()) return refuse(conflicts_.front().reason);
  if (deltas_.empty()) return true;
  Changes changes(*bodyOf(source_), source_.getFactory());
  try {
    for (const LibTarnDocument* const delta : deltas_) changes.applyAll(*bodyOf(*delta));
  } catch (const exceptions::EditorException& conflict) {
    return refuse(conflict.what());
  }
  changes.finish();
  return true;
}

}  // namespace editor
}  // namespace libtarn
