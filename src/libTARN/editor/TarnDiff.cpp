// The objects of both documents are walked side by side. While the names agree, objects are
// compared record by record; most are equal, and nothing else is done for them. Where the names
// differ, the index of the other document says which object the other one lacks. That is a guess,
// since a host can change a tree without its index. What has no partner in this walk is put aside
// and paired by name at the end. So documents in one order take no memory, and in any order the
// result is the same.
//
// Equal bytes of the parsed texts would be faster to compare than records, but do not prove equal
// trees: the parser writes a NUL over what ends a tag, so that "<p >1</p>" and "<p>>1</p>" leave
// the same bytes.

#include "libtarn/editor/TarnDiff.hpp"

#include <algorithm>
#include <string_view>

#include "../model/TypedChildren.hpp"
#include "../text/attributeNames.hpp"
#include "Comparison.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocument.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/Log.hpp"
#include "libtarn/model/TarnDomDocument.hpp"

namespace libtarn {
namespace editor {

using model::LibTarnCmDataImp;
using model::LibTarnHeaderImp;
using Object = model::LibTarnManagedObjectImp;
using Part = Difference::Part;

namespace {

const Node& rootOf(const model::LibTarnDocument& document) {
  return *document.getItsTarnDomDocument()->getRootElement();
}

/// An object and its name; an absent name counts as "".
struct NamedObject {
  const Object* object = nullptr;
  std::string_view name;
};

/// The objects of a body, in the order of the document.
class Objects {
 public:
  explicit Objects(const LibTarnCmDataImp* body) : body_(body) {
    take(body ? model::firstTypedChild<Object>(*body) : nullptr);
  }

  const NamedObject& current() const { return current_; }
  void advance() { take(model::nextTypedSibling(*current_.object)); }
  /// Returns true if the index knows the name.
  bool have(std::string_view name) const {
    return body_ && body_->hasLibTarnManagedObject(model::DistinguishedName(name.data()));
  }

 private:
  void take(const Object* object) {
    current_ = {object, ""};
    const Attribute* attribute = object ? object->first_attribute() : nullptr;
    while (attribute && nameOf(*attribute) != model::DIST_NAME_ATTRIBUTE) {
      attribute = attribute->next_attribute();
    }
    if (attribute) current_.name = valueOf(*attribute);
  }

  const LibTarnCmDataImp* body_;
  NamedObject current_;
};

/// Two objects of one name, or one that has no partner.
struct Pair {
  std::string_view name;
  const Object* older;
  const Object* newer;
};

template <class Entry>
void sortByName(std::vector<Entry>& entries) {
  const auto before = [](const Entry& a, const Entry& b) { return a.name < b.name; };
  if (std::is_sorted(entries.begin(), entries.end(), before)) return;
  std::stable_sort(entries.begin(), entries.end(), before);
}

/// The objects of two bodies that differ.
class Pairing {
 public:
  Pairing(const LibTarnCmDataImp* older, const LibTarnCmDataImp* newer)
      : older_(older), newer_(newer) {
    walk();
    pairRest();
    sortByName(pairs_);
  }

  const std::vector<Pair>& pairs() const { return pairs_; }

 private:
  void walk() {
    while (older_.current().object && newer_.current().object) {
      if (older_.current().name == newer_.current().name) {
        pair(older_.current(), newer_.current());
        older_.advance();
        newer_.advance();
        continue;
      }
      // The same for both sides, so that exchanged documents have exchanged differences.
      const bool stays = newer_.have(older_.current().name);
      const bool isOld = older_.have(newer_.current().name);
      if (!stays || isOld) putAside(older_, oldRest_);
      if (!isOld || stays) putAside(newer_, newRest_);
    }
    while (older_.current().object) putAside(older_, oldRest_);
    while (newer_.current().object) putAside(newer_, newRest_);
  }

  void pair(const NamedObject& older, const NamedObject& newer) {
    if (older.object == newer.object || sameTree(*older.object, *newer.object)) return;
    pairs_.push_back({older.name, older.object, newer.object});
  }

  static void putAside(Objects& objects, std::vector<NamedObject>& rest) {
    rest.push_back(objects.current());
    objects.advance();
  }

  void pairRest() {
    sortByName(oldRest_);
    sortByName(newRest_);
    auto x = oldRest_.begin();
    auto y = newRest_.begin();
    while (x != oldRest_.end() || y != newRest_.end()) {
      const int order = x == oldRest_.end()   ? 1
                        : y == newRest_.end() ? -1
                                              : x->name.compare(y->name);
      if (order == 0) {
        pair(*x++, *y++);
      } else if (order < 0) {
        pairs_.push_back({x->name, x->object, nullptr});
        ++x;
      } else {
        pairs_.push_back({y->name, nullptr, y->object});
        ++y;
      }
    }
  }

  Objects older_;
  Objects newer_;
  std::vector<NamedObject> oldRest_;
  std::vector<NamedObject> newRest_;
  std::vector<Pair> pairs_;
};

/// Compares two documents from their roots down.
class DocumentComparison {
 public:
  DocumentComparison(std::vector<Difference>& differences, const DiffOptions& options)
      : options_(options), comparison_(differences, options.operations) {}

  void compareRoots(const Node& older, const Node& newer) {
    comparison_.enterEnvelope(model::LibTarnDocument::TAG_NAME);
    if (options_.envelope) comparison_.compareAttributes(&older, &newer);
    comparison_.compareTexts(&older, &newer);
    comparison_.compareOthers(&older, &newer, isTyped<LibTarnCmDataImp>);
    auto* a = model::firstTypedChild<LibTarnCmDataImp>(older);
    auto* b = model::firstTypedChild<LibTarnCmDataImp>(newer);
    for (std::size_t position = 0; a || b; position += position == 0 ? 2 : 1) {
      compareBodies(a, b, position);
      if (a) a = model::nextTypedSibling(*a);
      if (b) b = model::nextTypedSibling(*b);
    }
  }

 private:
  template <class Imp>
  static bool isTyped(const Node& node) {
    return model::typedAs<Imp>(const_cast<Node*>(&node)) != nullptr;
  }
  static bool isPartOfBody(const Node& node) {
    return isTyped<Object>(node) || isTyped<LibTarnHeaderImp>(node);
  }

  void compareBodies(const LibTarnCmDataImp* older, const LibTarnCmDataImp* newer,
                     std::size_t position) {
    comparison_.enterEnvelope(LibTarnCmDataImp::TAG_NAME, position);
    comparison_.noteIfAlone(Part::Body, older, newer);
    if (options_.envelope) comparison_.compareAttributes(older, newer);
    comparison_.compareTexts(older, newer);
    comparison_.compareOthers(older, newer, isPartOfBody);
    if (options_.logs) compareHeaders(older, newer);
    const Pairing pairing(older, newer);
    for (const Pair& each : pairing.pairs()) {
      if (each.older && each.newer) {
        comparison_.compareObjects(*each.older, *each.newer);
      } else {
        comparison_.noteObject(each.older, each.newer);
      }
    }
  }

  void compareHeaders(const LibTarnCmDataImp* older, const LibTarnCmDataImp* newer) {
    auto* a = older ? model::firstTypedChild<LibTarnHeaderImp>(*older) : nullptr;
    auto* b = newer ? model::firstTypedChild<LibTarnHeaderImp>(*newer) : nullptr;
    while (a || b) {
      comparison_.enterEnvelope(LibTarnHeaderImp::TAG_NAME);
      comparison_.noteIfAlone(Part::Header, a, b);
      comparison_.compareAttributes(a, b);
      comparison_.compareTexts(a, b);
      comparison_.compareOthers(
          a, b, [](const Node& node) { return nameOf(node) == model::Log::TAG_NAME; });
      comparison_.compareLogs(a, b);
      if (a) a = model::nextTypedSibling(*a);
      if (b) b = model::nextTypedSibling(*b);
    }
  }

  DiffOptions options_;
  Comparison comparison_;
};

}  // namespace

TarnDiff::TarnDiff(const model::LibTarnDocument& oldDocument,
                   const model::LibTarnDocument& newDocument, const DiffOptions& options) {
  DocumentComparison(differences_, options).compareRoots(rootOf(oldDocument), rootOf(newDocument));
}

std::vector<Difference> TarnDiff::contentsOf(const model::LibTarnManagedObject& object,
                                             Difference::Kind kind, bool operation) {
  std::vector<Difference> differences;
  const auto* const imp = &model::implementation<Object>(object);
  const bool isAdded = kind == Difference::Kind::Added;
  Comparison(differences, operation).listContents(isAdded ? nullptr : imp, isAdded ? imp : nullptr);
  return differences;
}

}  // namespace editor
}  // namespace libtarn
