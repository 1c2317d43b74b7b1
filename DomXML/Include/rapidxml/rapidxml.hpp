#pragma once

// The XML core: plain node records, the memory pool that holds them, and the parser.
//
// A parsed document is a tree of records whose names and values point into the text, which the
// parser changes in place: a zero goes behind every name and value, references are expanded where
// they stand (the result is never longer than the reference). Nothing is copied and nothing is
// freed one by one; the pool goes as a whole.
//
// The parser asks for every node and attribute through IXMLFactory, so that a document derived from
// xml_document can hand out larger objects that embed a record.
//
// Cost: one pass over the text, a pointer bump for each node.

#include "Assertion.hpp"
#include "TarnApi.hpp"
#include "rapidxml/memory_pool.hpp"
#include "rapidxml/nodes.hpp"
#include "rapidxml/parser.hpp"

namespace rapidxml {

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
  xml_document() : xml_node<Ch>(node_document) {}

  /// Parses the zero-terminated `text` in place; `text` moves along. Detaches what the document
  /// held before. Throws parse_error for malformed text: nodes that were complete stay linked,
  /// elements still open are detached.
  template <int Flags>
  void parse(Ch*& text) {
    parse_events none;
    parse_telling<Flags>(text, none);
  }

 protected:
  /// As parse(); `events` are told, see parse_events.
  template <int Flags, class Events>
  void parse_telling(Ch*& text, Events& events) {
    static_assert(Flags == (parse_no_data_nodes | parse_declaration_node),
                  "the parser has one configuration");
    TARN_ASSERT(text, "text");
    this->remove_all_nodes();
    this->remove_all_attributes();
    internal::parser<Ch, Events>(*this, text, events).parse_into(*this);
  }
};

extern template class xml_base<char>;
extern template class xml_attribute<char>;
extern template class xml_node<char>;
extern template class memory_pool<char>;
extern template class xml_document<char>;

}  // namespace rapidxml
