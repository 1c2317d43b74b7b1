#pragma once

// A load: text to tree, with the indexes of the model filled and the rules of the format validated
// at the same time.
//
// In the documented order, the document is parsed first. Then each body (`cmData`) is walked in
// document order and every object and parameter added to its index; the first duplicate name ends
// that. Validation is another walk, in name order. That is three passes over all of the document's
// memory.
//
// A load does the work of all three at the end tag of each managed object, while the object is in
// the caches. It does so as long as a host cannot see the difference: the document, its index
// factory and its name validator are exactly the library's own classes, names are unique, every
// operation is known, and no name holds a NUL. Any other body is indexed again in document order,
// which reports the fault. Where a rule is broken, or may be, the caller walks with a Validator.
//
// Filled indexes take effect when the parse is done, body by body. When a load ends before that,
// cleanUp() empties them.

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
class LibTarnManagedObject;
class LibTarnManagedObjectImp;
class ListImp;
class StructureImp;
class TarnDomDocument;

/// One load of one text into one document. Exists only while the parse runs.
class Load : public rapidxml::parse_events {
 public:
  /// What the load is to make of the text.
  enum class Mode {
    TREE,           ///< The tree alone; the indexes stay as they are.
    INDEX,          ///< Tree and indexes.
    VALIDATE,       ///< Tree and indexes, and whether the rules are kept.
    VALIDATE_ONLY,  ///< Whether the rules are kept; each object is dropped after that.
    VISIT           ///< Each object is indexed, visited and dropped.
  };
  /// What is done with each object of the first body before it is dropped.
  struct Visitor {
    void (*call)(void* host, LibTarnManagedObject& object);
    void* host;
  };
  /// VALID when everything below the root is known to keep the rules of the format; with VISIT,
  /// when every object was visited and could be indexed.
  enum class Verdict { VALID, NOT_KNOWN };

  Load(TarnDomDocument& document, Mode mode);
  /// A load that visits.
  Load(TarnDomDocument& document, Visitor visitor);
  Load(const Load&) = delete;
  Load& operator=(const Load&) = delete;
  ~Load();

  /// Loads `text`, which ends with a NUL. The document takes the vector over; `text` then holds the
  /// text before. Throws rapidxml::parse_error, and ModelException where the documented order does.
  /// After any exception the document is as the documented order would have left it. With
  /// VALIDATE_ONLY and VISIT nothing in the document may be used afterwards, and nothing is logged.
  Verdict run(std::vector<char>& text);
  /// Like the other overload, for a NUL-terminated text, which is parsed in place and stays the
  /// caller's.
  Verdict run(char* text);

  /// Byte offset of the parser in the text while it asks `document` for a node: of the name of the
  /// element, or of what follows the "<?xml " of the declaration.
  static std::size_t placeOfParser(const TarnDomDocument& document);

  // For the document, when the parser allocates a node.

  /// Returns true if the node is the first one after a "<" outside of every element.
  bool isTopLevel() const { return isTopLevel_; }
  /// Notes that the node has been made. `nameEnd` is the end of its name, or null when it was not
  /// counted.
  void noteNode(char* nameEnd) {
    isTopLevel_ = false;
    nameEnd_ = nameEnd;
  }

  // rapidxml::parse_events
  void before_top_level_node() { isTopLevel_ = true; }
  /// Names have increasing addresses. An end that is not after `name` belongs to an earlier
  /// element: a host's hook has made this one without the document.
  char* end_of_counted_name(const char* name) {
    if (nameEnd_ > name) return nameEnd_;
    isTopLevel_ = false;
    return nullptr;
  }
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
    bool isIndexed;  // true while all its objects are indexed, without duplicates
    bool isVisited;
  };
  struct ObjectAttributes;
  struct Stopped {};

  void parse(char* text);
  Body* bodyOf(Node* parent);
  void complete(LibTarnManagedObjectImp& object, Body& body);
  bool index(LibTarnManagedObjectImp& object, const ObjectAttributes& attributes);
  bool index(ListImp& list, std::string_view name);
  bool index(StructureImp& item, std::string_view listName);
  void validate(const LibTarnManagedObjectImp& object, const ObjectAttributes& attributes);
  void require(bool isKept) { isValid_ = isValid_ && isKept; }
  bool drops() const { return mode_ == Mode::VALIDATE_ONLY || mode_ == Mode::VISIT; }
  void drop(LibTarnManagedObjectImp& object, Body& body);

  void finish();
  void finish(Body& body);
  bool adopt(Body& body);

  void cleanUp();
  void clearIndexes(Body& body);
  static void clearIndexes(ListImp& list);

  TarnDomDocument& document_;
  Mode mode_;
  Visitor visitor_{nullptr, nullptr};
  bool indexes_;  // during the parse
  bool isValid_;  // everything read so far, as far as known
  bool isParsed_ = false;
  bool hasNul_ = false;
  bool isTopLevel_ = false;   // between a "<" outside of every element and its node
  char* nameEnd_ = nullptr;   // of the last element that the document has made
  std::vector<Body> bodies_;  // with headers or objects, in document order
  std::size_t finished_ = 0;  // bodies whose indexes are in effect or emptied again
  std::vector<indexation::HashedObject> objects_;
  // Reused for one element after the other.
  ParsedNames<Scalar> scalars_;
  ParsedNames<List> lists_;
  ParsedNames<Scalar> components_;
};

}  // namespace model
}  // namespace libtarn
