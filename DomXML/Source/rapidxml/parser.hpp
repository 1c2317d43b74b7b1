#pragma once

// The parser: text to tree, in place, in one pass.
//
// No function recurses. Elements that are open while the parser runs form a chain through their
// parent links; an element is linked into its parent's children when its end tag has been read. The
// scanner skips runs of characters, sixteen bytes at a time, except names, which are short.
//
// Every write into the text is at or before the cursor's position, so the cursor is kept in a
// register and passed from function to function. The variable that the allocation hooks read is set
// before each call of a hook.

#include <cstddef>
#include <cstdint>
#include <limits>

#include "character_classes.hpp"
#include "libtarn/Assertion.hpp"
#include "libtarn/rapidxml/rapidxml.hpp"
#include "scan.hpp"

namespace rapidxml {

/// What a document may want to know while it is parsed. A document derives its own from this.
struct parse_events {
  /// Called before the node for a "<" outside of every element is allocated.
  void before_top_level_node() {}
  /// Returns the end of the element name at `name`, when the document has counted it to choose the
  /// node; null otherwise.
  template <class Ch>
  Ch* end_of_counted_name(Ch* /*name*/) const {
    return nullptr;
  }
  /// Called when a reference to NUL has been expanded.
  void nul_expanded() {}
  /// Called when an element within another has been read and linked. The outer one is still open.
  template <class Node>
  void element_complete(Node* /*element*/) {}
};

namespace internal {

/// One parse of one text. `text` is moved to the parser's position before each call of `factory`,
/// and to the end of the text after success.
template <class Ch, class Events>
class parser {
  using node = xml_node<Ch>;

 public:
  parser(IXMLFactory<Ch>& factory, Ch*& text, Events& events)
      : m_factory(factory), m_text(text), m_events(events), m_scanner(text) {}

  /// Appends what the text holds to `document`. Throws parse_error: nodes that were complete stay
  /// linked, elements still open are detached.
  void parse_into(node& document) {
    Ch* cursor = starts_with(m_text, "\xEF\xBB\xBF") ? m_text + 3 : m_text;
    for (;;) {
      cursor = skip<whitespace>(cursor);
      if (*cursor == Ch('\0')) break;
      if (*cursor != Ch('<')) throw parse_error("expected <", cursor);
      m_events.before_top_level_node();
      node* parsed = nullptr;
      cursor = parse_node(cursor + 1, parsed);
      if (parsed) document.append_node(parsed);
    }
    m_text = cursor;
  }

 private:
  // The elements whose end tag is still to come, innermost first, chained by their parent links.
  // None of them is in a list of children yet. A failed parse detaches them.
  class open_elements {
   public:
    open_elements() = default;
    open_elements(const open_elements&) = delete;
    open_elements& operator=(const open_elements&) = delete;
    ~open_elements() {
      while (m_innermost) pop();
    }

    node* innermost() const { return m_innermost; }

    void push(node* element) {
      element->m_parent = m_innermost;
      m_innermost = element;
    }

    node* pop() {
      node* const element = m_innermost;
      m_innermost = element->m_parent;
      element->m_parent = nullptr;
      return element;
    }

   private:
    node* m_innermost = nullptr;
  };

  // Parses one node and everything below it; `cursor` is after its "<". `result` stays null for
  // markup that leaves no node.
  Ch* parse_node(Ch* cursor, node*& result) {
    open_elements open;
    for (;;) {
      node* parsed = nullptr;
      bool has_content = false;
      cursor = parse_markup(cursor, parsed, has_content);
      if (has_content) {
        open.push(parsed);
      } else if (!open.innermost()) {
        result = parsed;
        return cursor;
      } else if (parsed) {
        open.innermost()->link_last(parsed);
        m_events.element_complete(parsed);
      }
      bool ended = false;
      for (;;) {
        cursor = parse_content(cursor, open.innermost(), ended);
        if (!ended) break;
        parsed = open.pop();
        if (!open.innermost()) {
          result = parsed;
          return cursor;
        }
        open.innermost()->link_last(parsed);
        m_events.element_complete(parsed);
      }
    }
  }

  // Parses one piece of markup; `cursor` is after its "<". Of an element, parses the start tag.
  [[gnu::always_inline]] Ch* parse_markup(Ch* cursor, node*& parsed, bool& has_content) {
    if (*cursor == Ch('!')) return skip_exclamation(cursor + 1);
    if (*cursor == Ch('?')) return parse_question(cursor + 1, parsed);
    return parse_start_tag(cursor, parsed, has_content);
  }

  // Skips a comment, CDATA section, DOCTYPE or another "<!": no node.
  [[gnu::noinline]] static Ch* skip_exclamation(Ch* cursor) {
    if (starts_with(cursor, "--")) return skip_past(cursor + 2, "-->");
    if (starts_with(cursor, "[CDATA[")) return skip_past(cursor + 7, "]]>");
    if (starts_with(cursor, "DOCTYPE") && is<whitespace>(cursor[7])) {
      return skip_doctype(cursor + 8);
    }
    return skip_past(cursor, ">");
  }

  // A ">" inside an internal subset does not end the DOCTYPE. A "]" without a "[" is ignored.
  static Ch* skip_doctype(Ch* cursor) {
    for (std::size_t depth = 0; *cursor != Ch('\0'); ++cursor) {
      if (*cursor == Ch('[')) ++depth;
      if (*cursor == Ch(']') && depth > 0) --depth;
      if (*cursor == Ch('>') && depth == 0) return cursor + 1;
    }
    throw parse_error("unexpected end of data", cursor);
  }

  // Parses the declaration, or skips a processing instruction, which leaves no node.
  [[gnu::noinline]] Ch* parse_question(Ch* cursor, node*& parsed) {
    if (!is_declaration(cursor)) return skip_past(cursor, "?>");
    cursor += 4;
    m_text = cursor;
    parsed = allocate(node_declaration);
    cursor = parse_attributes(skip<whitespace>(cursor), parsed);
    if (cursor[0] != Ch('?') || cursor[1] != Ch('>')) throw parse_error("expected ?>", cursor);
    return cursor + 2;
  }

  static bool is_declaration(const Ch* cursor) {
    return (cursor[0] == Ch('x') || cursor[0] == Ch('X')) &&
           (cursor[1] == Ch('m') || cursor[1] == Ch('M')) &&
           (cursor[2] == Ch('l') || cursor[2] == Ch('L')) && is<whitespace>(cursor[3]);
  }

  [[gnu::always_inline]] Ch* parse_start_tag(Ch* const name, node*& parsed, bool& has_content) {
    m_text = name;
    node* const element = allocate(node_element);
    // The name in the node does not count: a host's hook may return a node that it has used before.
    Ch* const counted = m_events.end_of_counted_name(name);
    Ch* const name_end = counted ? counted : skip_name<node_name>(name);
    if (name_end == name) throw parse_error("expected element name", name);
    element->name(name, token_size(name, name_end));
    Ch* cursor = name_end;
    if (is<whitespace>(*cursor)) cursor = parse_attributes(skip_blank(cursor), element);
    has_content = *cursor == Ch('>');
    if (!has_content && *cursor == Ch('/')) ++cursor;
    if (*cursor != Ch('>')) throw parse_error("expected >", cursor);
    *name_end = Ch('\0');
    parsed = element;
    return cursor + 1;
  }

  node* allocate(node_type type) {
    node* const made = m_factory.allocate_node(type, nullptr, nullptr, 0, 0);
    node::assert_linkable(made);
    return made;
  }

  // Reads the attributes of `owner` from `cursor` and returns the position after them.
  [[gnu::always_inline]] Ch* parse_attributes(Ch* cursor, node* owner) {
    while (is<attribute_name>(*cursor)) {
      Ch* const name = cursor;
      Ch* const name_end = skip_name<attribute_name>(name + 1);
      m_text = name_end;
      xml_attribute<Ch>* const attribute = m_factory.allocate_attribute(nullptr, nullptr, 0, 0);
      attribute->name(name, token_size(name, name_end));
      owner->append_attribute(attribute);
      if (name_end[0] == Ch('=') && name_end[1] == Ch('"')) {
        *name_end = Ch('\0');
        cursor = parse_quoted<double_quoted, '"'>(name_end + 2, attribute);
      } else {
        cursor = parse_spaced_value(name_end, attribute);
      }
      if (is<whitespace>(*cursor)) cursor = skip_blank(cursor);
    }
    return cursor;
  }

  // Reads "=" and a value with blanks around them, or a value in single quotes.
  [[gnu::noinline]] Ch* parse_spaced_value(Ch* name_end, xml_attribute<Ch>* attribute) {
    Ch* cursor = skip<whitespace>(name_end);
    if (*cursor != Ch('=')) throw parse_error("expected =", cursor);
    *cursor = Ch('\0');
    *name_end = Ch('\0');
    cursor = skip<whitespace>(cursor + 1);
    if (*cursor == Ch('"')) return parse_quoted<double_quoted, '"'>(cursor + 1, attribute);
    if (*cursor == Ch('\'')) return parse_quoted<single_quoted, '\''>(cursor + 1, attribute);
    throw parse_error("expected ' or \"", cursor);
  }

  template <class Class, char Quote>
  Ch* parse_quoted(Ch* const value, xml_attribute<Ch>* attribute) {
    Ch* cursor = value;
    Ch* const value_end = expand<Class>(cursor);
    if (*cursor != Ch(Quote)) throw parse_error("expected ' or \"", cursor);
    attribute->value(value, token_size(value, value_end));
    *value_end = Ch('\0');
    return cursor + 1;
  }

  // Reads the content of `element` up to and with the next "<" that opens markup, or up to and with
  // the end tag; `ended` says which.
  Ch* parse_content(Ch* const start, node* element, bool& ended) {
    Ch* cursor = skip_name<whitespace>(start);
    if (*cursor != Ch('<')) cursor = parse_text(start, cursor, element);
    ++cursor;
    ended = *cursor == Ch('/');
    if (!ended) return cursor;
    cursor = skip_name<node_name>(cursor + 1);
    if (*cursor != Ch('>')) cursor = skip<whitespace>(cursor);
    if (*cursor != Ch('>')) throw parse_error("expected >", cursor);
    return cursor + 1;
  }

  // Reads the text from `cursor` to the next "<". Returns the position of that "<", which may have
  // been overwritten by a NUL. The blanks from `start` to `cursor` belong to the text. The first
  // text of an element is its value; later ones are dropped.
  Ch* parse_text(Ch* start, Ch* cursor, node* element) {
    if (*cursor == Ch('\0')) throw parse_error("unexpected end of data", cursor);
    Ch* const end = expand<text>(cursor);
    if (element->value_size() == 0) element->value(start, token_size(start, end));
    const bool ended = *cursor == Ch('\0');
    *end = Ch('\0');
    if (ended) throw parse_error("unexpected end of data", cursor);
    return cursor;
  }

  // Moves `cursor` to the end of a run of characters of `Class` and expands references in place.
  // Returns the end of the expanded run.
  template <class Class>
  Ch* expand(Ch*& cursor) {
    cursor = skip<without_references<Class>>(cursor);
    return *cursor == Ch('&') ? expand_references<Class>(cursor) : cursor;
  }

  template <class Class>
  [[gnu::noinline]] Ch* expand_references(Ch*& cursor) {
    Ch* read = cursor;
    Ch* write = read;
    while (is<Class>(*read)) {
      if (*read == Ch('&')) {
        write = expand_reference(read, write);
      } else {
        *write++ = *read++;
      }
    }
    cursor = read;
    return write;
  }

  // `read` is at an "&". Writes the character that the reference stands for and moves `read` after
  // the reference. An "&" that opens no reference stands for itself.
  Ch* expand_reference(Ch*& read, Ch* write) {
    if (read[1] == Ch('#')) return expand_numeric_reference(read, write);
    for (const named_reference& reference : named_references) {
      if (!starts_with(read + 1, reference.name)) continue;
      read += 1 + reference.size;
      *write = reference.character;
      return write + 1;
    }
    *write = *read++;
    return write + 1;
  }

  Ch* expand_numeric_reference(Ch*& read, Ch* write) {
    const bool hexadecimal = read[2] == Ch('x');
    Ch* const digits = read + (hexadecimal ? 3 : 2);
    const std::uint32_t base = hexadecimal ? 16 : 10;
    std::uint32_t code = 0;
    Ch* end = digits;
    for (; digit_value(*end) < base; ++end) {
      // Once too large, `code` stays too large: it cannot overflow, however many digits follow.
      if (code <= max_code_point) code = code * base + digit_value(*end);
    }
    if (end == digits) {
      *write = *read++;
      return write + 1;
    }
    if (code > max_code_point) {
      throw parse_error("invalid numeric character entity", end);
    }
    if (*end != Ch(';')) throw parse_error("expected ;", end);
    if (code == 0) m_events.nul_expanded();
    read = end + 1;
    return write_utf8(code, write);
  }

  template <class Class>
  static bool is(Ch character) {
    return contains<Class>(character);
  }

  template <class Class>
  Ch* skip(Ch* cursor) {
    return m_scanner.template end_of<Class>(cursor);
  }

  // Like skip(), from a blank that is rarely followed by another.
  Ch* skip_blank(Ch* cursor) {
    ++cursor;
    return is<whitespace>(*cursor) ? skip<whitespace>(cursor) : cursor;
  }

  // Names are so short, and of so few lengths, that a byte at a time is faster.
  template <class Class>
  static Ch* skip_name(Ch* cursor) {
    for (;; cursor += 4) {
      if (!is<Class>(cursor[0])) return cursor;
      if (!is<Class>(cursor[1])) return cursor + 1;
      if (!is<Class>(cursor[2])) return cursor + 2;
      if (!is<Class>(cursor[3])) return cursor + 3;
    }
  }

  static bool starts_with(const Ch* cursor, const Ch* prefix) {
    for (; *prefix != Ch('\0'); ++cursor, ++prefix) {
      if (*cursor != *prefix) return false;
    }
    return true;
  }

  // Returns the position after the next `end`.
  static Ch* skip_past(Ch* cursor, const Ch* end) {
    for (; *cursor != Ch('\0'); ++cursor) {
      if (starts_with(cursor, end)) return cursor + measure(end);
    }
    throw parse_error("unexpected end of data", cursor);
  }

  // Returns the length of a name or value, which must fit the 32 bits of a record.
  static std::size_t token_size(Ch* begin, const Ch* end) {
    const auto size = static_cast<std::size_t>(end - begin);
    if (size > std::numeric_limits<std::uint32_t>::max()) {
      throw parse_error("name or value too long", begin);
    }
    return size;
  }

  IXMLFactory<Ch>& m_factory;
  Ch*& m_text;
  Events& m_events;
  scanner m_scanner;
};

}  // namespace internal

template <class Ch>
template <class Events>
void xml_document<Ch>::parse_reporting(Ch*& text, Events& events) {
  TARN_ASSERT(text, "text");
  this->remove_all_nodes();
  this->remove_all_attributes();
  internal::parser<Ch, Events>(*this, text, events).parse_into(*this);
}

}  // namespace rapidxml
