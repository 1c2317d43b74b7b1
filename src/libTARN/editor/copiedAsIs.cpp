#include "copiedAsIs.hpp"

#include <cstring>
#include <string_view>

#include "../model/Internals.hpp"
#include "../model/TypedChildren.hpp"
#include "../model/sameTree.hpp"
#include "../text/attributeNames.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"

namespace libtarn {
namespace editor {

using model::Attribute;
using model::nameOf;
using model::Node;
using model::Record;

namespace {

// A copied text ends at a NUL.
bool isWhole(const Record& record) {
  return std::memchr(record.value(), '\0', record.value_size()) == nullptr;
}

// Few enough to be compared with one another.
bool areDistinct(const Node& element) {
  constexpr int FEW = 8;
  int count = 0;
  for (const Attribute* a = element.first_attribute(); a; a = a->next_attribute()) {
    if (++count > FEW || !isWhole(*a)) return false;
    for (const Attribute* b = a->next_attribute(); b; b = b->next_attribute()) {
      if (nameOf(*a) == nameOf(*b)) return false;
    }
  }
  return true;
}

// No text, and no attribute but a name.
bool hasOnlyName(const Node& element) {
  const Attribute* const first = element.first_attribute();
  if (element.value_size() > 0) return false;
  return !first ||
         (!first->next_attribute() && nameOf(*first) == model::NAME_ATTRIBUTE && isWhole(*first));
}

template <class Imp>
const Imp* exactly(const Node& node) {
  constexpr std::string_view TAG = Imp::TAG_NAME;
  const auto& element = static_cast<const libDomXml::DomElement&>(node);
  if (!model::isExactly<Imp>(element) || !model::sameBytes(nameOf(node), TAG)) return nullptr;
  return static_cast<const Imp*>(&element);
}

bool isWholeScalar(const Node& scalar) {
  return !scalar.first_node() && isWhole(scalar) && areDistinct(scalar);
}

bool isScalarCopiedAsIs(const Node& node) {
  return exactly<model::ScalarImp>(node) && isWholeScalar(node);
}

/// Checks that the children of one kind are those of the index, so that their names differ.
class Indexed {
 public:
  explicit Indexed(const Node& parent) : parent_(parent) {}

  void count() { ++children_; }
  template <class Imp, class Collection>
  bool areIn(const Collection& collection) const {
    std::size_t indexed = 0;
    for (const auto& [name, each] : collection) {
      const auto& element = model::implementation<Imp>(*each);
      const char* const current = element.getLiteralAttribute(model::NAME_ATTRIBUTE);
      if (element.parent() != &parent_) return false;
      if (name != current && std::strcmp(name, current ? current : "") != 0) return false;
      ++indexed;
    }
    return indexed == children_;
  }

 private:
  const Node& parent_;
  std::size_t children_ = 0;
};

bool isItemCopiedAsIs(const Node& node) {
  const auto* const item = exactly<model::StructureImp>(node);
  if (!item || item->value_size() > 0 || item->first_attribute()) return false;
  Indexed components(*item);
  for (const Node* child = item->first_node(); child; child = child->next_sibling()) {
    if (!isScalarCopiedAsIs(*child)) return false;
    components.count();
  }
  return components.areIn<model::ScalarImp>(item->getComponents());
}

}  // namespace

bool isCopiedAsIs(const model::ScalarImp& scalar) {
  return model::isExactly<model::ScalarImp>(scalar) && isWholeScalar(scalar);
}

bool isCopiedAsIs(const model::ListImp& list) {
  if (!model::isExactly<model::ListImp>(list) || !hasOnlyName(list)) return false;
  for (const Node* child = list.first_node(); child; child = child->next_sibling()) {
    if (!isScalarCopiedAsIs(*child) && !isItemCopiedAsIs(*child)) return false;
  }
  return true;
}

bool isCopiedAsIs(const model::LibTarnExtensionImp& extension) {
  if (!model::isExactly<model::LibTarnExtensionImp>(extension) || !hasOnlyName(extension)) {
    return false;
  }
  const Node* child = extension.first_node();
  while (child && isScalarCopiedAsIs(*child)) child = child->next_sibling();
  return !child;
}

bool isCopiedAsIs(const model::LibTarnManagedObjectImp& object) {
  if (!model::isExactly<model::LibTarnManagedObjectImp>(object) || object.value_size() > 0 ||
      !areDistinct(object)) {
    return false;
  }
  Indexed scalars(object);
  Indexed lists(object);
  for (const Node* child = object.first_node(); child; child = child->next_sibling()) {
    if (isScalarCopiedAsIs(*child)) {
      scalars.count();
    } else if (const auto* const list = exactly<model::ListImp>(*child)) {
      if (!isCopiedAsIs(*list)) return false;
      lists.count();
    } else {
      const auto* const extension = exactly<model::LibTarnExtensionImp>(*child);
      if (!extension || !isCopiedAsIs(*extension)) return false;
    }
  }
  return scalars.areIn<model::ScalarImp>(object.getScalarParameters()) &&
         lists.areIn<model::ListImp>(object.getListParameters());
}

}  // namespace editor
}  // namespace libtarn
