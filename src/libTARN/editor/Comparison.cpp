#include "Comparison.hpp"

#include <algorithm>

#include "../text/attributeNames.hpp"
#include "../text/patternText.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/List.hpp"
#include "libtarn/model/Log.hpp"
#include "libtarn/model/Scalar.hpp"
#include "libtarn/model/Structure.hpp"

namespace libtarn {
namespace editor {

namespace {

constexpr std::string_view SCALAR_TAG = model::Scalar::TAG_NAME;
constexpr std::string_view LIST_TAG = model::List::TAG_NAME;
constexpr std::string_view ITEM_TAG = model::Structure::TAG_NAME;
constexpr std::string_view EXTENSION_TAG = model::LibTarnExtension::TAG_NAME;
constexpr std::string_view LOG_TAG = model::Log::TAG_NAME;

constexpr std::string_view NAME = model::NAME_ATTRIBUTE;

static_assert(SCALAR_TAG.size() == 1);
bool isScalar(const Node& node) {
  return node.name_size() == SCALAR_TAG.size() && *node.name() == SCALAR_TAG[0];
}
bool isItem(const Node& node) { return nameOf(node) == ITEM_TAG; }
bool isValue(const Node& node) { return isScalar(node) || isItem(node); }
bool isLog(const Node& node) { return nameOf(node) == LOG_TAG; }
bool isPartOfObject(const Node& node) {
  return isScalar(node) || nameOf(node) == LIST_TAG || nameOf(node) == EXTENSION_TAG;
}
bool isNothing(const Node& /*node*/) { return false; }

const Node* skipToValue(const Node* node) {
  while (node && !isValue(*node)) node = node->next_sibling();
  return node;
}

// The value of the attribute "name"; an absent one counts as "".
std::string_view keyOf(const Node& element) {
  const Attribute* attribute = element.first_attribute();
  while (attribute && !sameBytes(nameOf(*attribute), NAME)) {
    attribute = attribute->next_attribute();
  }
  return attribute ? valueOf(*attribute) : std::string_view("");
}

constexpr std::size_t NO_RANK = 3;

// Position of its kind among the parts of objects.
std::size_t rankOf(const Node& node) {
  if (isScalar(node)) return 0;
  if (nameOf(node) == LIST_TAG) return 1;
  return nameOf(node) == EXTENSION_TAG ? 2 : NO_RANK;
}

// The first bytes as a number: names whose numbers differ have the order of the numbers.
std::uint64_t startOf(std::string_view name) {
  std::uint64_t start = 0;
  for (std::size_t i = 0; i < sizeof(start); ++i) {
    const auto byte = i < name.size() ? static_cast<unsigned char>(name[i]) : 0U;
    start = start << 8U | byte;
  }
  return start;
}

// The one of two that is there.
template <class Element>
const Element& eitherOf(const Element* older, const Element* newer) {
  const Element* const there = older ? older : newer;
  TARN_ASSERT(there, "older || newer");
  return *there;
}

Difference::Part partOf(std::string_view attribute) {
  if (attribute == model::CLASS_ATTRIBUTE) return Difference::Part::Class;
  if (attribute == model::VERSION_ATTRIBUTE) return Difference::Part::Version;
  if (attribute == model::OPERATION_ATTRIBUTE) return Difference::Part::Operation;
  return Difference::Part::Attribute;
}

}  // namespace

// Objects

void Comparison::enterObjects(const Object* older, const Object* newer) {
  place_ = Difference();
  place_.oldObject = older;
  place_.newObject = newer;
  place_.distName =
      model::textOrEmpty(eitherOf(older, newer).getLiteralAttribute(model::DIST_NAME_ATTRIBUTE));
}

void Comparison::compareObjects(const Object& older, const Object& newer) {
  enterObjects(&older, &newer);
  compareContents(&older, &newer);
}

void Comparison::noteObject(const Object* older, const Object* newer) {
  enterObjects(older, newer);
  noteWhole(Part::Object, older, newer);
}

void Comparison::listContents(const Object* older, const Object* newer) {
  enterObjects(older, newer);
  compareContents(older, newer);
}

void Comparison::compareContents(const Node* older, const Node* newer) {
  compareObjectAttributes(older, newer);
  compareTexts(older, newer);
  compareChildren(older, newer);
  place_.name = nullptr;
}

// Most objects have the same children in the same order as before.
void Comparison::compareChildren(const Node* older, const Node* newer) {
  if (older && newer && pairInOrder(*older, *newer)) {
    if (unequal_.size() > 1) std::sort(unequal_.begin(), unequal_.end());
    for (const Unequal& each : unequal_) {
      if (each.rank == 0) compareParameters(each.older, each.newer);
      if (each.rank == 1) compareLists(each.older, each.newer);
      if (each.rank == 2) compareExtensions(each.older, each.newer);
    }
    return;
  }
  compareOthers(older, newer, isPartOfObject);
  compareNamed(older, newer, SCALAR_TAG, ofObject_,
               [this](const Node* a, const Node* b) { compareParameters(a, b); });
  compareNamed(older, newer, LIST_TAG, ofObject_,
               [this](const Node* a, const Node* b) { compareLists(a, b); });
  compareNamed(older, newer, EXTENSION_TAG, ofObject_,
               [this](const Node* a, const Node* b) { compareExtensions(a, b); });
}

// Returns false unless all children are parts of objects, and every two have one kind and one name.
bool Comparison::pairInOrder(const Node& older, const Node& newer) {
  unequal_.clear();
  const Node* x = older.first_node();
  const Node* y = newer.first_node();
  for (std::size_t number = 0; x && y; ++number) {
    const std::size_t rank = rankOf(*x);
    if (rank == NO_RANK || rankOf(*y) != rank) return false;
    if (!sameTree(*x, *y)) {
      const std::string_view name = keyOf(*x);
      if (!sameBytes(name, keyOf(*y))) return false;
      unequal_.push_back({rank, name, startOf(name), number, x, y});
    }
    x = x->next_sibling();
    y = y->next_sibling();
  }
  return !x && !y;
}

bool Comparison::Unequal::operator<(const Unequal& other) const {
  if (rank != other.rank) return rank < other.rank;
  if (start != other.start) return start < other.start;
  const int order = name.compare(other.name);
  return order != 0 ? order < 0 : number < other.number;
}

// The attributes that are parts of their own come first.
void Comparison::compareObjectAttributes(const Node* older, const Node* newer) {
  const std::size_t begin = differences_.size();
  compareAttributes(older, newer, model::DIST_NAME_ATTRIBUTE);
  std::string_view previous;
  std::size_t kept = begin;
  for (std::size_t i = begin; i < differences_.size(); ++i) {
    Difference difference = differences_[i];
    const std::string_view name = difference.attribute;
    // A second attribute of the name has no meaning in the format.
    if (name != previous) difference.part = partOf(name);
    previous = name;
    if (difference.part == Part::Operation && !operations_) continue;
    if (difference.part != Part::Attribute) difference.attribute = nullptr;
    differences_[kept++] = difference;
  }
  differences_.resize(kept);
  std::stable_sort(differences_.begin() + static_cast<std::ptrdiff_t>(begin), differences_.end(),
                   [](const Difference& a, const Difference& b) { return a.part < b.part; });
}

// Parts of objects

void Comparison::compareParameters(const Node* older, const Node* newer) {
  place_.name = keyOf(eitherOf(older, newer)).data();
  compareScalars(Part::Parameter, older, newer, model::NAME_ATTRIBUTE);
}

void Comparison::compareParameterText(const Node& older, const Node& other) {
  const std::string_view text = valueOf(other);
  const std::size_t end = text.find('\0');
  if (sameBytes(valueOf(older), text.substr(0, end))) return;
  place_.name = keyOf(older).data();
  noteValue(Part::Parameter, &older, &other);
}

void Comparison::compareScalars(Part part, const Node* older, const Node* newer,
                                std::string_view key) {
  if (!older || !newer || !sameBytes(valueOf(*older), valueOf(*newer)))
    noteValue(part, older, newer);
  compareAttributes(older, newer, key);
  compareOthers(older, newer, isNothing);
}

void Comparison::compareLists(const Node* older, const Node* newer) {
  if (older && newer && sameTree(*older, *newer)) return;
  place_.name = keyOf(eitherOf(older, newer)).data();
  noteIfAlone(Part::List, older, newer);
  compareAttributes(older, newer, model::NAME_ATTRIBUTE);
  compareTexts(older, newer);
  compareOthers(older, newer, isValue);
  compareValues(older, newer);
}

// A value and an item at one position are two differences.
void Comparison::compareValues(const Node* older, const Node* newer) {
  const Node* x = older ? skipToValue(older->first_node()) : nullptr;
  const Node* y = newer ? skipToValue(newer->first_node()) : nullptr;
  for (place_.position = 1; x || y; ++place_.position) {
    if (x && y && isItem(*x) == isItem(*y)) {
      compareValue(x, y);
    } else {
      if (x) compareValue(x, nullptr);
      if (y) compareValue(nullptr, y);
    }
    if (x) x = skipToValue(x->next_sibling());
    if (y) y = skipToValue(y->next_sibling());
  }
  place_.position = 0;
}

void Comparison::compareValue(const Node* older, const Node* newer) {
  if (isItem(eitherOf(older, newer))) {
    compareItems(older, newer);
  } else {
    compareScalars(Part::ListValue, older, newer, {});
  }
}

void Comparison::compareItems(const Node* older, const Node* newer) {
  if (older && newer && sameTree(*older, *newer)) return;
  noteIfAlone(Part::Item, older, newer);
  compareAttributes(older, newer);
  compareTexts(older, newer);
  compareOthers(older, newer, isScalar);
  compareNamed(older, newer, SCALAR_TAG, ofParameter_, [this](const Node* a, const Node* b) {
    place_.component = keyOf(eitherOf(a, b)).data();
    compareScalars(Part::Component, a, b, model::NAME_ATTRIBUTE);
  });
  place_.component = nullptr;
}

void Comparison::compareExtensions(const Node* older, const Node* newer) {
  if (older && newer && sameTree(*older, *newer)) return;
  place_.name = keyOf(eitherOf(older, newer)).data();
  noteIfAlone(Part::Extension, older, newer);
  compareAttributes(older, newer, model::NAME_ATTRIBUTE);
  compareTexts(older, newer);
  compareOthers(older, newer, isScalar);
  compareNamed(older, newer, SCALAR_TAG, ofParameter_, [this](const Node* a, const Node* b) {
    place_.component = keyOf(eitherOf(a, b)).data();
    compareScalars(Part::ExtensionParameter, a, b, model::NAME_ATTRIBUTE);
  });
  place_.component = nullptr;
}

// Any element

void Comparison::enterEnvelope(const char* tag, std::size_t position) {
  place_ = Difference();
  place_.distName = "";
  place_.name = tag;
  place_.position = position;
}

Difference& Comparison::noteWhole(Part part, const Record* older, const Record* newer) {
  differences_.push_back(place_);
  Difference& difference = differences_.back();
  difference.kind = !older ? Kind::Added : !newer ? Kind::Removed : Kind::Changed;
  difference.part = part;
  return difference;
}

void Comparison::noteIfAlone(Part part, const Node* older, const Node* newer) {
  if (!older || !newer) noteWhole(part, older, newer);
}

void Comparison::noteValue(Part part, const Record* older, const Record* newer) {
  Difference& difference = noteWhole(part, older, newer);
  if (older) difference.oldValue = older->value();
  if (newer) difference.newValue = newer->value();
}

// The attribute `key`, by which elements are compared, shows only where one of two lacks it.
void Comparison::compareAttributes(const Node* older, const Node* newer, std::string_view key) {
  if (older && newer && sameAttributes(*older, *newer)) return;
  const auto collectAll = [](const Node* element, std::vector<Named>& named) {
    named.clear();
    const Attribute* each = element ? element->first_attribute() : nullptr;
    for (; each; each = each->next_attribute()) named.push_back({nameOf(*each), each});
    sort(named);
  };
  collectAll(older, attributes_.older);
  collectAll(newer, attributes_.newer);
  const bool showsKey = older && newer;
  std::string_view previous;
  pairUp(attributes_, [&](const Record* a, const Record* b) {
    const Record& there = eitherOf(a, b);
    const bool isFirst = nameOf(there) != previous;
    previous = nameOf(there);
    if (a && b && valueOf(*a) == valueOf(*b)) return;
    if (!showsKey && isFirst && nameOf(there) == key) return;
    noteValue(Part::Attribute, a, b);
    differences_.back().attribute = there.name();
  });
}

void Comparison::compareTexts(const Node* older, const Node* newer) {
  const Node* const a = older && older->value_size() > 0 ? older : nullptr;
  const Node* const b = newer && newer->value_size() > 0 ? newer : nullptr;
  if ((a || b) && !(a && b && valueOf(*a) == valueOf(*b))) noteValue(Part::Text, a, b);
}

// Children by name

template <class Compare>
void Comparison::compareNamed(const Node* older, const Node* newer, std::string_view tag,
                              Children& children, Compare compare) {
  collect(older, tag, children.older);
  collect(newer, tag, children.newer);
  pairUp(children, [&compare](const Record* a, const Record* b) {
    compare(static_cast<const Node*>(a), static_cast<const Node*>(b));
  });
}

// Equal names are paired in their order.
template <class Compare>
void Comparison::pairUp(Children& children, Compare compare) {
  auto x = children.older.begin();
  auto y = children.newer.begin();
  const auto endOfOlder = children.older.end();
  const auto endOfNewer = children.newer.end();
  while (x != endOfOlder || y != endOfNewer) {
    const int order = x == endOfOlder ? 1 : y == endOfNewer ? -1 : x->name.compare(y->name);
    compare(order <= 0 ? x->record : nullptr, order >= 0 ? y->record : nullptr);
    if (order <= 0) ++x;
    if (order >= 0) ++y;
  }
}

void Comparison::sort(std::vector<Named>& named) {
  const auto before = [](const Named& a, const Named& b) { return a.name < b.name; };
  if (std::is_sorted(named.begin(), named.end(), before)) return;
  std::stable_sort(named.begin(), named.end(), before);
}

void Comparison::collect(const Node* parent, std::string_view tag, std::vector<Named>& named) {
  named.clear();
  const Node* each = parent ? parent->first_node() : nullptr;
  for (; each; each = each->next_sibling()) {
    if (nameOf(*each) == tag) named.push_back({keyOf(*each), each});
  }
  sort(named);
}

// Log entries

namespace {

using Logs = std::vector<const Node*>;

Logs logsOf(const Node* header) {
  Logs logs;
  const Node* each = header ? header->first_node() : nullptr;
  for (; each; each = each->next_sibling()) {
    if (isLog(*each)) logs.push_back(each);
  }
  return logs;
}

// Returns the length of the longest beginning of `second` that is the end of `first`; linear.
std::size_t overlap(const Logs& first, const Logs& second) {
  std::vector<std::size_t> shorter(second.size(), 0);
  const auto extend = [&second, &shorter](std::size_t length, const Node& next) {
    while (length > 0 && (length == second.size() || !sameTree(*second[length], next))) {
      length = shorter[length - 1];
    }
    return !second.empty() && sameTree(*second[length], next) ? length + 1 : length;
  };
  for (std::size_t i = 1; i < second.size(); ++i) shorter[i] = extend(shorter[i - 1], *second[i]);
  std::size_t length = 0;
  for (const Node* const each : first) length = extend(length, *each);
  return length;
}

struct Kept {
  std::size_t first;  // equal entries at the start of both
  std::size_t last;   // equal entries at the end of both
};

Kept keptOf(const Logs& older, const Logs& newer) {
  const std::size_t most = std::min(older.size(), newer.size());
  Kept kept{0, 0};
  while (kept.first < most && sameTree(*older[kept.first], *newer[kept.first])) ++kept.first;
  while (kept.first + kept.last < most &&
         sameTree(*older[older.size() - 1 - kept.last], *newer[newer.size() - 1 - kept.last])) {
    ++kept.last;
  }
  return kept;
}

}  // namespace

// A header loses its oldest entries when it gets new ones. So the entries that both have are the
// start and the end of both, or the end of one and the start of the other, whichever is more.
void Comparison::compareLogs(const Node* older, const Node* newer) {
  const Logs oldLogs = logsOf(older);
  const Logs newLogs = logsOf(newer);
  const Kept kept = keptOf(oldLogs, newLogs);
  const std::size_t grown = overlap(oldLogs, newLogs);
  const std::size_t shrunk = overlap(newLogs, oldLogs);
  std::size_t oldBegin = kept.first;
  std::size_t oldEnd = oldLogs.size() - kept.last;
  std::size_t newBegin = kept.first;
  std::size_t newEnd = newLogs.size() - kept.last;
  if (grown > kept.first + kept.last && grown > shrunk) {
    oldBegin = 0;
    oldEnd = oldLogs.size() - grown;
    newBegin = grown;
    newEnd = newLogs.size();
  } else if (shrunk > kept.first + kept.last && shrunk > grown) {
    oldBegin = shrunk;
    oldEnd = oldLogs.size();
    newBegin = 0;
    newEnd = newLogs.size() - shrunk;
  }
  const auto noteLog = [this](std::size_t index, const Node* before, const Node* after) {
    enterEnvelope(model::Log::TAG_NAME, index + 1);
    noteValue(Part::Log, before, after);
    compareAttributes(before, after);
    compareOthers(before, after, isNothing);
  };
  for (std::size_t i = oldBegin; i < oldEnd; ++i) noteLog(i, oldLogs[i], nullptr);
  for (std::size_t i = newBegin; i < newEnd; ++i) noteLog(i, nullptr, newLogs[i]);
}

}  // namespace editor
}  // namespace libtarn
