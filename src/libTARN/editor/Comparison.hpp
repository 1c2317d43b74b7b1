#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "../model/sameTree.hpp"
#include "libtarn/editor/Difference.hpp"

namespace libtarn {

namespace model {
class LibTarnManagedObjectImp;
}

namespace editor {

using model::Attribute;
using model::nameOf;
using model::Node;
using model::Record;
using model::sameAttributes;
using model::sameBytes;
using model::sameTree;
using model::valueOf;

/// Appends differences to a list, element by element.
///
/// It reads the records of the tree, not the indexes: what a host did to a tree without its indexes
/// counts. Of every pair of elements one may be null: then the other one was added or removed.
class Comparison {
 public:
  using Kind = Difference::Kind;
  using Part = Difference::Part;
  using Object = model::LibTarnManagedObjectImp;

  Comparison(std::vector<Difference>& differences, bool operations)
      : differences_(differences), operations_(operations) {}

  /// Compares two objects of one name.
  void compareObjects(const Object& older, const Object& newer);
  /// Notes that an object was added or removed.
  void noteObject(const Object* older, const Object* newer);
  /// Lists what one object holds.
  void listContents(const Object* older, const Object* newer);

  // Parts of objects. enterObjects() comes first.

  void enterObjects(const Object* older, const Object* newer);
  void compareParameters(const Node* older, const Node* newer);
  /// Compares a parameter with itself as it is after it has got the text of another one, which ends
  /// at a NUL.
  void compareParameterText(const Node& older, const Node& other);
  void compareLists(const Node* older, const Node* newer);
  void compareExtensions(const Node* older, const Node* newer);

  // What is outside of objects.

  /// Sets the place of the differences that follow: an element by its tag.
  void enterEnvelope(const char* tag, std::size_t position = 0);
  /// Notes the place itself, without values, when only one document has it.
  void noteIfAlone(Part part, const Node* older, const Node* newer);
  void compareAttributes(const Node* older, const Node* newer, std::string_view key = {});
  void compareTexts(const Node* older, const Node* newer);
  /// Compares the children of which `isKnown` is false.
  template <class IsKnown>
  void compareOthers(const Node* older, const Node* newer, IsKnown isKnown);
  /// Log entries of two headers; the place is in the header.
  void compareLogs(const Node* older, const Node* newer);

 private:
  struct Named {
    std::string_view name;
    const Record* record;
  };
  /// The children of one kind of two elements.
  struct Children {
    std::vector<Named> older;
    std::vector<Named> newer;
  };

  /// Two children of two objects that differ.
  struct Unequal {
    std::size_t rank;  // of their kind
    std::string_view name;
    std::uint64_t start;  // of the name, in the order of names
    std::size_t number;   // among the children
    const Node* older;
    const Node* newer;

    bool operator<(const Unequal& other) const;
  };

  bool pairInOrder(const Node& older, const Node& newer);
  void compareChildren(const Node* older, const Node* newer);
  Difference& noteWhole(Part part, const Record* older, const Record* newer);
  void noteValue(Part part, const Record* older, const Record* newer);
  void compareContents(const Node* older, const Node* newer);
  void compareObjectAttributes(const Node* older, const Node* newer);
  void compareScalars(Part part, const Node* older, const Node* newer, std::string_view key);
  void compareValues(const Node* older, const Node* newer);
  void compareValue(const Node* older, const Node* newer);
  void compareItems(const Node* older, const Node* newer);
  template <class Compare>
  void compareNamed(const Node* older, const Node* newer, std::string_view tag, Children& children,
                    Compare compare);
  template <class Compare>
  static void pairUp(Children& children, Compare compare);
  static void sort(std::vector<Named>& named);
  static void collect(const Node* parent, std::string_view tag, std::vector<Named>& named);

  std::vector<Difference>& differences_;
  bool operations_;
  Difference place_{};  // without kind, part and values
  // Reused. What is below an entry of the first one uses the second one.
  Children ofObject_;
  Children ofParameter_;
  Children attributes_;
  std::vector<Unequal> unequal_;
};

template <class IsKnown>
void Comparison::compareOthers(const Node* older, const Node* newer, IsKnown isKnown) {
  const auto skipKnown = [&isKnown](const Node* node) {
    while (node && isKnown(*node)) node = node->next_sibling();
    return node;
  };
  const Node* const first = older ? skipKnown(older->first_node()) : nullptr;
  const Node* const otherFirst = newer ? skipKnown(newer->first_node()) : nullptr;
  const Node* x = first;
  const Node* y = otherFirst;
  while (x && y && sameTree(*x, *y)) {
    x = skipKnown(x->next_sibling());
    y = skipKnown(y->next_sibling());
  }
  if (!x && !y) return;
  noteWhole(Part::Other, first, otherFirst);
}

}  // namespace editor
}  // namespace libtarn
