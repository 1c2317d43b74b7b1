#pragma once

// The printer: a node tree as indented text.
//
// Elements are indented by one space a level, nodes of every other kind by tabs. An element without
// value and children is a start tag and an end tag, never one self-closing tag. The walk goes along
// the parent links, so that no depth of the tree costs stack.

#include <cstddef>
#include <iterator>
#include <string>

#include "rapidxml/rapidxml.hpp"

namespace rapidxml {

/// Print flag: no indentation and no line breaks.
constexpr int print_no_indenting = 1;

namespace internal {

/// Where the printer writes: any output iterator.
template <class OutIt>
class iterator_sink {
 public:
  explicit iterator_sink(OutIt out) : m_out(out) {}

  void put(char c) { *m_out++ = c; }
  void put(const char* begin, const char* end) {
    while (begin != end) *m_out++ = *begin++;
  }
  void fill(std::size_t count, char c) {
    for (; count > 0; --count) *m_out++ = c;
  }
  OutIt position() const { return m_out; }

 private:
  OutIt m_out;
};

/// Appends to a string in runs.
class string_sink {
 public:
  explicit string_sink(std::string& out) : m_out(&out) {}

  void put(char c) { m_out->push_back(c); }
  void put(const char* begin, const char* end) { m_out->append(begin, end); }
  void fill(std::size_t count, char c) { m_out->append(count, c); }

 private:
  std::string* m_out;
};

/// What the character becomes in printed text, or null for the character itself.
constexpr const char* reference_for(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '\'':
      return "&apos;";
    case '"':
      return "&quot;";
    default:
      return nullptr;
  }
}

template <class Sink>
class printer {
 public:
  using node = xml_node<char>;

  printer(Sink& sink, int flags) : m_sink(sink), m_indenting((flags & print_no_indenting) == 0) {}

  void print(const node* top, std::size_t indent) {
    const node* current = top;
    std::size_t depth = indent;
    for (;;) {
      if (open(current, depth)) {
        if (current->type() == node_element) ++depth;
        current = current->first_node();
        continue;
      }
      for (;;) {
        end_line();
        if (current == top) return;
        if (const node* const next = current->next_sibling()) {
          current = next;
          break;
        }
        current = current->parent();
        if (current->type() == node_element) close(current, --depth);
      }
    }
  }

  /// The element without the line break behind it.
  void print_element(const node* element, std::size_t indent) {
    if (!open(element, indent)) return;
    for (const node* child = element->first_node(); child; child = child->next_sibling()) {
      print(child, indent + 1);
    }
    close(element, indent);
  }

  void expanded(const char* begin, const char* end, char noexpand) {
    const char* run = begin;
    for (; begin != end; ++begin) {
      const char* const reference = *begin == noexpand ? nullptr : reference_for(*begin);
      if (!reference) continue;
      m_sink.put(run, begin);
      put(reference);
      run = begin + 1;
    }
    m_sink.put(run, end);
  }

 private:
  // Prints what stands before the children, and all of a node whose children are not printed.
  // True when children follow.
  bool open(const node* current, std::size_t depth) {
    switch (current->type()) {
      case node_document:
        return current->first_node() != nullptr;
      case node_element:
        return open_element(current, depth);
      case node_data:
        tabs(depth);
        expanded_value(current);
        return false;
      case node_cdata:
        return enclosed(depth, "<![CDATA[", current, "]]>");
      case node_comment:
        return enclosed(depth, "<!--", current, "-->");
      case node_declaration:
        tabs(depth);
        put("<?xml");
        attributes(current);
        put("?>");
        return false;
      case node_doctype:
        return enclosed(depth, "<!DOCTYPE ", current, ">");
      case node_pi:
        tabs(depth);
        put("<?");
        name(current);
        m_sink.put(' ');
        value(current);
        put("?>");
        return false;
    }
    TARN_ASSERT(false, "0");
    return false;
  }

  bool open_element(const node* element, std::size_t depth) {
    spaces(depth);
    m_sink.put('<');
    name(element);
    attributes(element);
    m_sink.put('>');
    const node* const child = element->first_node();
    if (child && !is_only_data(child)) {
      end_line();
      return true;
    }
    expanded_value(child ? child : element);
    end_tag(element);
    return false;
  }

  static bool is_only_data(const node* first) {
    return first->type() == node_data && !first->next_sibling();
  }

  void close(const node* element, std::size_t depth) {
    spaces(depth);
    end_tag(element);
  }

  void end_tag(const node* element) {
    put("</");
    name(element);
    m_sink.put('>');
  }

  bool enclosed(std::size_t depth, const char* before, const node* current, const char* after) {
    tabs(depth);
    put(before);
    value(current);
    put(after);
    return false;
  }

  void attributes(const node* owner) {
    const xml_attribute<char>* attribute = owner->first_attribute();
    for (; attribute; attribute = attribute->next_attribute()) {
      m_sink.put(' ');
      name(attribute);
      m_sink.put('=');
      quoted_value(attribute);
    }
  }

  // A value that holds a double quote goes into single quotes.
  void quoted_value(const xml_attribute<char>* attribute) {
    const char* const begin = attribute->value();
    const char* const end = begin + attribute->value_size();
    const bool has_double_quote =
        std::char_traits<char>::find(begin, attribute->value_size(), '"') != nullptr;
    const char quote = has_double_quote ? '\'' : '"';
    const char other_quote = has_double_quote ? '"' : '\'';
    m_sink.put(quote);
    expanded(begin, end, other_quote);
    m_sink.put(quote);
  }

  void expanded_value(const node* current) {
    expanded(current->value(), current->value() + current->value_size(), '\0');
  }

  void name(const xml_base<char>* record) {
    m_sink.put(record->name(), record->name() + record->name_size());
  }
  void value(const xml_base<char>* record) {
    m_sink.put(record->value(), record->value() + record->value_size());
  }
  void put(const char* text) { m_sink.put(text, text + measure(text)); }

  void spaces(std::size_t depth) {
    if (m_indenting) m_sink.fill(depth, ' ');
  }
  void tabs(std::size_t depth) {
    if (m_indenting) m_sink.fill(depth, '\t');
  }
  void end_line() {
    if (m_indenting) m_sink.put('\n');
  }

  Sink& m_sink;
  const bool m_indenting;
};

}  // namespace internal

/// Prints `node` and everything below it, with a line feed behind each node unless `flags` holds
/// print_no_indenting. `indent` is the depth of the node, from 0. Returns the advanced iterator.
template <class OutIt>
OutIt print_node(OutIt out, const xml_node<char>* node, int flags, int indent) {
  internal::iterator_sink<OutIt> sink(out);
  internal::printer<internal::iterator_sink<OutIt>>(sink, flags)
      .print(node, static_cast<std::size_t>(indent));
  return sink.position();
}

/// As above, appending to `out` in runs instead of single characters.
void print_node(std::string& out, const xml_node<char>* node, int flags, int indent);

/// Prints an element (asserted) and everything below it, without a line feed behind its end tag.
template <class OutIt>
OutIt print_element_node(OutIt out, const xml_node<char>* node, int flags, int indent) {
  TARN_ASSERT(node->type() == node_element, "node->type() == node_element");
  internal::iterator_sink<OutIt> sink(out);
  internal::printer<internal::iterator_sink<OutIt>>(sink, flags)
      .print_element(node, static_cast<std::size_t>(indent));
  return sink.position();
}

/// Copies the characters, the five special ones as references but for `noexpand` (zero: none is
/// exempt). Returns the advanced iterator.
template <class OutIt>
OutIt copy_and_expand_chars(const char* begin, const char* end, char noexpand, OutIt out) {
  internal::iterator_sink<OutIt> sink(out);
  internal::printer<internal::iterator_sink<OutIt>>(sink, 0).expanded(begin, end, noexpand);
  return sink.position();
}

}  // namespace rapidxml
