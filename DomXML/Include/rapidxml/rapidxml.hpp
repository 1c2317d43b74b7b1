#pragma once

// The XML core: node records, the memory pool that holds them, and the parser.
//
// A parsed document is a tree of records whose names and values point into the text. The parser
// changes the text in place: it writes a NUL after every name and value, and overwrites references
// with what they stand for, which is never longer. Nothing is copied and nothing is freed one by
// one; the pool is released as a whole.
//
// The parser allocates every node and attribute through IXMLFactory, so that a document derived
// from xml_document can return larger objects that embed a record.
//
// Cost: one pass over the text, a pointer bump for each node.

#include <exception>

#include "libtarn/TarnApi.hpp"
#include "libtarn/rapidxml/memory_pool.hpp"
#include "libtarn/rapidxml/nodes.hpp"

namespace rapidxml {

/// Reports malformed text: what is wrong, and where in the parsed text.
class TARN_API parse_error : public std::exception {
 public:
  /// Keeps the pointer `what`: the text must live as long as the exception and its copies.
  parse_error(const char* what, void* where) : m_what(what), m_where(where) {}

  /// Returns what is wrong.
  const char* what() const noexcept override;

  /// Returns the position of the fault within the text given to the parser. Valid as long as that
  /// text.
  template <class Ch = char>
  Ch* where() const {
    return static_cast<Ch*>(m_where);
  }

 private:
  const char* m_what;
  void* m_where;
};

/// Parse option: text becomes the value of its element and no data nodes are made.
constexpr int parse_no_data_nodes = 1;
/// Parse option: the XML declaration becomes a node.
constexpr int parse_declaration_node = 32;

/// Root of a tree and the pool that holds it.
///
/// The text given to parse() must stay alive and unchanged as long as the tree is used.
template <class Ch>
class TARN_API xml_document : public xml_node<Ch>, public memory_pool<Ch> {
 public:
  /// An empty document.
  xml_document() : xml_node<Ch>(node_document) {}

  /// Parses the NUL-terminated `text` in place and moves `text` along. Detaches what the document
  /// held before. Throws parse_error for malformed text: nodes that were complete stay linked,
  /// elements still open are detached.
  template <int Flags>
  void parse(Ch*& text) {
    static_assert(Flags == (parse_no_data_nodes | parse_declaration_node),
                  "the parser has one configuration");
    parse_in_place(text);
  }

 protected:
  /// Like parse(), and reports to `events`. Its class is one that the library's own documents
  /// derive from parse_events; the definition stands beside the parser.
  template <class Events>
  void parse_reporting(Ch*& text, Events& events);

 private:
  void parse_in_place(Ch*& text);
};

extern template class xml_document<char>;

}  // namespace rapidxml
