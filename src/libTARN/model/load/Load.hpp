#pragma once

// A load: text to tree, with the indexes of the model filled and the rules of the format checked on
// the way.
//
// The documented order is: parse everything, then walk each body (`cmData`) in document order and
// add every object and parameter to its index; the first one whose name is taken ends that.
// Validation is another walk, in the order of names. Three passes over all of the document's
// memory.
//
// A load does the work of all three at the end tag of each managed object, while the object is in
// the caches, as long as nobody can tell the difference: the document, its index factory and its
// name validator are exactly the library's own classes, no name is there twice, every operation is
// known, and no name holds a zero byte. A body with anything else is indexed again in document
// order, which reports what is wrong; and where a rule is broken, or may be, the caller walks with
// a Validator.
//
// What has been filled on the way comes into effect when the parse is done, body by body. However
// the load ends before that, cleanUp() takes it back.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "../indexation/HashedObject.hpp"
#include "ParsedNames.hpp"
#include "rapidxml/parser.hpp"

namespace libtarn {
namespace model {

class LibTarnCmDataImp;
class LibTarnManagedObjectImp;
class ListImp;
class StructureImp;
class TarnDomDocument;

/// One load of one text into one document. Made when the parse begins, gone when it ends.
class Load : public rapidxml::parse_events {
 public:
  /// What is wanted of the text.
  enum class Mode {
    TREE,       ///< The tree alone; the indexes stay as they are.
    INDEX,      ///< Tree and indexes.
    VALIDATE,   ///< Tree and indexes, and whether the rules are kept.
    ONLY_CHECK  ///< Whether the rules are kept; objects are dropped as soon as they were checked.
  };
  /// Whether all below the root is known to keep the rules of the format.
  enum class Verdict { VALID, NOT_KNOWN };

  Load(TarnDomDocument& document, Mode mode);
  Load(const Load&) = delete;
  Load& operator=(const Load&) = delete;
  ~Load();

  /// Loads `text`, which ends with a zero byte. The document takes it over; the text before comes
  /// back in its stead. Throws rapidxml::parse_error, and ModelException for what the documented
  /// walk refuses: whatever is thrown, the document is as that order would have left it. With
  /// ONLY_CHECK nothing in the document may be used afterwards, and nothing is logged.
  Verdict run(std::vector<char>& text);
  /// As above for a zero-terminated text, in place, which stays the caller's.
  Verdict run(char* text);

  // What the document tells and asks when the parser wants a node.

  /// Whether the node is the first one behind a "<" outside of every element.
  bool isTopLevel() const { return isTopLevel_; }
  /// The node is made; `nameEnd` is the end of its name, or null when it was not counted.
  void noteNode(char* nameEnd) {
    isTopLevel_ = false;
    nameEnd_ = nameEnd;
  }

  // rapidxml::parse_events
  void before_top_level_node() { isTopLevel_ = true; }
  /// Names come one behind the other: the end of an earlier one, when a host's hook did not ask the
  /// document for the node, is not behind this one.
  char* end_of_counted_name(const char* name) const { return nameEnd_ > name ? nameEnd_ : nullptr; }
  void nul_expanded() { hasNul_ = true; }
  void element_complete(rapidxml::xml_node<char>* element);

 private:
  using Node = rapidxml::xml_node<char>;

  /// A cmData below the root; its objects are `objects_` from `begin` to `end`.
  struct Body {
    LibTarnCmDataImp* cmData;
    std::size_t begin;
    std::size_t end;
    std::size_t headers;
    bool isIndexed;  // every object so far, and nothing in one is there twice
  };
  struct ObjectAttributes;
  struct Stopped {};

  void parse(char* text);
  Body* bodyOf(Node* parent);
  void complete(LibTarnManagedObjectImp& object, Body& body);
  bool index(LibTarnManagedObjectImp& object, const ObjectAttributes& attributes);
  bool index(ListImp& list, std::string_view name);
  bool index(StructureImp& item, std::string_view listName);
  void check(const LibTarnManagedObjectImp& object, const ObjectAttributes& attributes);
  void require(bool isKept) { isValid_ = isValid_ && isKept; }
  void drop(LibTarnManagedObjectImp& object, Body& body);

  void finish();
  void finish(Body& body);
  bool adopt(Body& body);

  void cleanUp();
  void takeBack(Body& body);
  static void takeBack(ListImp& list);

  TarnDomDocument& document_;
  Mode mode_;
  bool indexes_;  // on the way
  bool isValid_;  // all that has been read, as far as known
  bool isParsed_ = false;
  bool hasNul_ = false;
  bool isTopLevel_ = false;   // from a "<" outside of every element to the node behind it
  char* nameEnd_ = nullptr;   // of the last element that the document has made
  std::vector<Body> bodies_;  // that have headers or objects, in document order
  std::size_t finished_ = 0;  // bodies whose indexes are in effect, or have been taken back
  std::vector<indexation::HashedObject> objects_;
  // For one element after the other.
  ParsedNames<Scalar> scalars_;
  ParsedNames<List> lists_;
  ParsedNames<Scalar> components_;
};

}  // namespace model
}  // namespace libtarn
